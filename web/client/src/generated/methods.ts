// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  Empty,
  AsteriskUser,
  ChatWindowState,
  DynamicMsgAnswer,
  EmotionText,
  FileList,
  FoundFiles,
  IMAtMember,
  IMAtReaders,
  IMAtUnread,
  IMContact,
  IMContactGroupInfo,
  IMContactVerifyMsg,
  IMCount,
  IMDisplayName,
  IMEnableTribeNum,
  IMFileExpireTime,
  IMLoginGrant,
  IMMessagePage,
  IMMsgPosition,
  IMPictures,
  IMReadFlags,
  IMRoamStatus,
  IMRoamed,
  IMTribeAt,
  IMTribeClasses,
  IMTribeDisplayNicks,
  IMTribeMembers,
  IMTribeNicknameValue,
  IMTribeNumberValue,
  IMTribeRoster,
  IMTribeTextValue,
  IMUnreads,
  IMUserRequest,
  QuittedTribes,
  ResultCode,
  SearchAnswer,
  SearchCidAnswer,
  ShallowTribe,
  ShallowTribes,
  ShallowTribesEx,
  TransferAnswer,
  TranslateMsg,
  TranslateSetting,
  TribeBaseInfo,
  TribeBlackItems,
  TribeVerifyMsgs,
  TribemsgIMMessagePage,
  TribemsgIMUnreads,
  TribemsgSearchAnswer,
  TribemsgSearchCidAnswer,
  UserNick,
} from "./records.ts";
import type {
  BroadcastMsgRequest,
  CloudFileMetaRequest,
  ContactName,
  DynamicMsgRequest,
  EditPicRequest,
  EmotionTextRequest,
  FileListRequest,
  FileRecordRequest,
  FileSearchRequest,
  ForwardMsgRequest,
  GroupName,
  IMAtContextRequest,
  IMAtMemberRequest,
  IMContactAction,
  IMContactVerifyPage,
  IMConversations,
  IMDeleteRequest,
  IMFolderRequest,
  IMMaxCacheRequest,
  IMMsgRequest,
  IMMsgsRequest,
  IMMultiChatName,
  IMPageRequest,
  IMPasswordLogin,
  IMPictureRequest,
  IMResendRequest,
  IMRoamRequest,
  IMSearchRequest,
  IMSetRoamRequest,
  IMShieldRequest,
  IMTokenLogin,
  IMTribeList,
  IMTribeMemberLevel,
  IMTribeMemberSearch,
  IMTribeMembersRequest,
  IMTribeNickRequest,
  IMTribeNickname,
  IMTribeNumber,
  IMTribeText,
  IMTribeUser,
  IMTribeVerifyAction,
  IMTribeVerifyPage,
  IMUsers,
  IMWithdrawRequest,
  InConversation,
  SearchCidRequest,
  SendMsgRequest,
  SentMsgRequest,
  TranslateMsgRequest,
  TribemgrIMTribeRequest,
  TribemsgEditPicRequest,
  TribemsgForwardMsgRequest,
  TribemsgIMConversations,
  TribemsgIMDeleteRequest,
  TribemsgIMMsgRequest,
  TribemsgIMMsgsRequest,
  TribemsgIMPageRequest,
  TribemsgIMPictureRequest,
  TribemsgIMResendRequest,
  TribemsgIMRoamRequest,
  TribemsgIMSearchRequest,
  TribemsgIMWithdrawRequest,
  TribemsgInConversation,
  TribemsgSearchCidRequest,
  TribemsgSendMsgRequest,
} from "./requests.ts";

/** Routing paths by the name of the client's module face. */
export const routingPaths = {
  bizutil: "im.bizutil",
  contact: "im.contact",
  filetransfer: "im.filetransfer",
  login: "im.login",
  singlemsg: "im.singlemsg",
  tribemgr: "im.tribemgr",
  tribemsg: "im.tribemsg",
  virtualmsg: "im.virtualmsg",
} as const;

/** Every method: by routing path, then by name. */
export interface Methods {
  "im.bizutil": Empty;
  "im.contact": {
    /** What the account may see of users: name, portrait, whether they are there. */
    GetContactBaseInfo: {
      request: ContactName[];
      answer: { code: number; subcode: number; result: IMContact[] };
    };
    /** The contacts that bear a mark. */
    GetAsteriskUserList: {
      request: Empty;
      answer: { code: number; subcode: number; result: AsteriskUser[] };
    };
    /** A group's sub-groups and members. */
    GetGroupInfo: {
      request: GroupName;
      answer: ResultCode & IMContactGroupInfo;
    };
    /** Lets who asks have the account as a contact. */
    AgreeAddContact: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** The same, and makes who asks a contact in turn. */
    AgreeAndAddContact: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** Refuses a request. */
    RefuseAddContact: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** Refuses, and puts who asks on the black list; also somebody who did not ask. */
    AddToBlack: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** Puts a request aside and reports it to the server's administration. */
    ReportAddContact: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** Puts a request aside; who asks hears nothing. */
    IgnoreAddContact: {
      request: IMContactAction;
      answer: ResultCode;
    };
    /** Takes verification messages off the account's own list. */
    DeleteContactVerifyMsgs: {
      request: IMContactAction[];
      answer: ResultCode;
    };
    /** A page of requests and answers, oldest first. */
    GetContactVerifyMsgs: {
      request: IMContactVerifyPage;
      answer: { code: number; subcode: number; result: IMContactVerifyMsg[] };
    };
    /** The names to show for users. */
    GetContactDisplayName: {
      request: IMUsers;
      answer: { code: number; subcode: number; result: IMDisplayName[] };
    };
    /** The names to show for users named by long identifiers, in their order. */
    GetUserDisplayNick: {
      request: string[];
      answer: { code: number; subcode: number; result: UserNick[] };
    };
  };
  "im.filetransfer": {
    /** Where a file's transfer stands. */
    GetFileTransferInfo: {
      request: CloudFileMetaRequest;
      answer: ResultCode & TransferAnswer;
    };
    /** Brings a file to this machine; how it goes on comes as onUpdateTransferInfo. */
    DownloadCloudFile: {
      request: FileRecordRequest;
      answer: ResultCode;
    };
    /** Ends a download and drops what had come. */
    CancelDownloadCloudFile: {
      request: CloudFileMetaRequest;
      answer: ResultCode;
    };
    /** Ends an upload. */
    CancelUploadFile: {
      request: CloudFileMetaRequest;
      answer: ResultCode;
    };
    /** Takes a file out of its conversation; its sender and a tribe's managers only. */
    DeleteCloudFile: {
      request: FileRecordRequest;
      answer: ResultCode;
    };
    /** Whether a path is one whose folder may be shown. */
    OpenFolder: {
      request: IMFolderRequest;
      answer: ResultCode;
    };
    /** Brings a file to this machine and answers with its path then. */
    PreviewCloudFile: {
      request: FileRecordRequest;
      answer: ResultCode & TransferAnswer;
    };
    /** A page of files, of one conversation or, without an owner, of all. */
    GetCloudFileList: {
      request: FileListRequest;
      answer: ResultCode & FileList;
    };
    /** A page of the files that have such names. */
    SearchCloudFiles: {
      request: FileSearchRequest;
      answer: ResultCode & FoundFiles;
    };
    /** How long the server keeps files. */
    GetFileExpireTime: {
      request: Empty;
      answer: ResultCode & IMFileExpireTime;
    };
  };
  "im.login": {
    /** The account that this page works for. */
    GetCurrentLoginID: {
      request: Empty;
      answer: ResultCode & IMUserRequest;
    };
    /** Logs the page in by the token of an earlier login. */
    DoLoginByToken: {
      request: IMTokenLogin;
      answer: ResultCode & IMLoginGrant;
    };
    /** Logs the page in by its user's password. */
    DoLoginByPassWord: {
      request: IMPasswordLogin;
      answer: ResultCode & IMLoginGrant;
    };
    /** Drops and renews the link to the server. */
    DoNetReConnect: {
      request: Empty;
      answer: ResultCode;
    };
    /** Logs the account out; its token stays good. */
    DoLogout: {
      request: Empty;
      answer: ResultCode;
    };
  };
  "im.singlemsg": {
    /** The new messages; they count as read when the conversation's window can be seen. */
    GetNewMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** The new messages of the time logged out; marks them read if no others are unread. */
    GetOfflineMsg: {
      request: InConversation;
      answer: ResultCode & IMMessagePage;
    };
    /** The new messages; marks nothing read. */
    PeekNewMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** The new messages that came while nobody was logged in; marks nothing read. */
    PeekOfflineMsg: {
      request: InConversation;
      answer: ResultCode & IMMessagePage;
    };
    /** A page of the server's history. */
    GetRemoteHisMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** A page of the history on this machine. */
    GetLocalHisMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** The number of unread messages of a conversation. */
    GetUnreadCount: {
      request: InConversation;
      answer: ResultCode & IMCount;
    };
    /** The unread counts of several conversations; of all that have messages if none is named. */
    GetUnreadCountInBulk: {
      request: IMConversations;
      answer: ResultCode & IMUnreads;
    };
    /** Marks every message received so far as read; nobody else is told. */
    SetMsgRead: {
      request: InConversation;
      answer: ResultCode;
    };
    /** The newest received message up to which everything is read; 0 when there is none. */
    GetReadedBoundary: {
      request: InConversation;
      answer: ResultCode & IMMsgPosition;
    };
    /** Removes messages from this machine for good; answers their number. */
    DeleteLocalMsg: {
      request: IMDeleteRequest;
      answer: ResultCode & IMCount;
    };
    /** Sends a message that failed again, and tries a lost link at once. */
    FastReSendChatMsg: {
      request: IMResendRequest;
      answer: ResultCode;
    };
    /** Sends a message that failed again. */
    ReSendChatMsg: {
      request: IMResendRequest;
      answer: ResultCode;
    };
    /** Sends a message on to several conversations; the stored one when the body is empty. */
    ForwardChatMsg: {
      request: ForwardMsgRequest;
      answer: ResultCode;
    };
    /** Sends a message to several conversations. */
    SendBroadcastMsg: {
      request: BroadcastMsgRequest;
      answer: ResultCode;
    };
    /** Sends a message; how it went on comes as onSendMsgStatus. */
    SendNormalChatMsg: {
      request: SendMsgRequest;
      answer: ResultCode;
    };
    /** Sends an automatic reply. */
    SendAutoReplyMsg: {
      request: SendMsgRequest;
      answer: ResultCode;
    };
    /** Whether own messages were read; of the newest 200 when none are named. */
    GetFlagsMyMsgReaded: {
      request: IMMsgsRequest;
      answer: ResultCode & IMReadFlags;
    };
    /** Tells the peer that its messages were read; all that are when none are named. */
    SetFlagsPeerMsgReaded: {
      request: IMMsgsRequest;
      answer: ResultCode;
    };
    /** Takes an own message back. */
    DoChatMsgWithdraw: {
      request: IMWithdrawRequest;
      answer: ResultCode;
    };
    /** The message with this identifier. */
    SearchMsgByID: {
      request: IMMsgRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** Searches the messages of a conversation. */
    SearchDBMsg: {
      request: IMSearchRequest;
      answer: ResultCode & SearchAnswer;
    };
    /** Searches the messages of a conversation, or of all when none is named. */
    SearchDBMsg2: {
      request: IMSearchRequest;
      answer: ResultCode & SearchAnswer;
    };
    /** The conversations with at least one message that fits. */
    SearchDBMsgCid: {
      request: SearchCidRequest;
      answer: ResultCode & SearchCidAnswer;
    };
    /** Pictures of a conversation. */
    GetMsgPicture: {
      request: IMPictureRequest;
      answer: ResultCode & IMPictures;
    };
    /** Fetches messages from the server to this machine. */
    RoamMsg: {
      request: IMRoamRequest;
      answer: ResultCode & IMRoamed;
    };
    /** Forgets how far the history on this machine is complete, so that it is fetched anew. */
    ClearRoamedTime: {
      request: InConversation;
      answer: ResultCode;
    };
    /** Whether the server hands out history. */
    GetRoamStatus: {
      request: Empty;
      answer: ResultCode & IMRoamStatus;
    };
    /** Switches the server's history on or off. */
    SetRoamStatus: {
      request: IMSetRoamRequest;
      answer: ResultCode;
    };
    /** Sets whether the peer's automatic replies are ignored. */
    ShieldAutoReply: {
      request: IMShieldRequest;
      answer: ResultCode;
    };
    /** Lets the user edit a picture and sends the result to several conversations. */
    EditPic2SendMsg: {
      request: EditPicRequest;
      answer: ResultCode;
    };
    /** Makes the body of a typed text: shortcuts of emotions become tokens, the rest stays text. */
    ConvertMsgText2Emotion: {
      request: EmotionTextRequest;
      answer: ResultCode & EmotionText;
    };
    /** Bounds the number of new messages kept in memory; 0 sets the engine's own bound. */
    SetNewMsgMaxCache: {
      request: IMMaxCacheRequest;
      answer: ResultCode;
    };
    /** The present content of a message that only names it. */
    GetDynamicMsg: {
      request: DynamicMsgRequest;
      answer: ResultCode & DynamicMsgAnswer;
    };
    /** Adds a note to the conversation that audio can be shown as text. */
    AddAudio2textSettingRemind: {
      request: InConversation;
      answer: ResultCode;
    };
    /** Whether messages are translated. */
    GetTranslateSetting: {
      request: Empty;
      answer: ResultCode & TranslateSetting;
    };
    /** Translates the text of a message. */
    GetTranslateMsg: {
      request: TranslateMsgRequest;
      answer: ResultCode & TranslateMsg;
    };
  };
  "im.tribemgr": {
    /** One tribe in short. */
    GetShallowTribe: {
      request: TribemgrIMTribeRequest;
      answer: { code: number; subcode: number; result: ShallowTribe };
    };
    /** All tribes of the account in short. */
    GetShallowTribeList: {
      request: Empty;
      answer: ResultCode & ShallowTribes;
    };
    /** The tribes that the account has left, or was removed from. */
    GetQuittedTribe: {
      request: Empty;
      answer: ResultCode & QuittedTribes;
    };
    /** The notice images of tribes. */
    GetShallowTribeEx: {
      request: IMTribeList;
      answer: ResultCode & ShallowTribesEx;
    };
    /** All members of a tribe; who is online is told by notifications from then on. */
    GetTribeMemberList: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeRoster;
    };
    /** Those of the users named who are members. */
    GetTribeMemberbyID: {
      request: IMTribeMembersRequest;
      answer: ResultCode & IMTribeMembers;
    };
    /** The members whom the account pays attention to. */
    GetAttentionMembers: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeMembers;
    };
    /** The tribe's bulletin. */
    GetTribeBulletin: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeTextValue;
    };
    /** Members with a text in one of their names, at most 200. */
    SearchTribeMember: {
      request: IMTribeMemberSearch;
      answer: ResultCode & IMTribeMembers;
    };
    /** What the last search in this tribe found comes first in the next ones. */
    SelectTribeSearchResult: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode;
    };
    /** What a tribe says of itself, also to those who are no members and may see it. */
    GetTribeBaseInfo: {
      request: TribemgrIMTribeRequest;
      answer: { code: number; subcode: number; result: TribeBaseInfo };
    };
    /** The classes that a tribe can have. */
    GetAllClass: {
      request: Empty;
      answer: ResultCode & IMTribeClasses;
    };
    /** Gives the tribe another class; managers only. */
    SetClass: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Renames a tribe; managers only. */
    SetTribeName: {
      request: IMTribeText;
      answer: ResultCode;
    };
    /** Describes a tribe; managers only. */
    SetTribeDes: {
      request: IMTribeText;
      answer: ResultCode;
    };
    /** Forgets the tribe's visitors; managers only. */
    ClearVisitors: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode;
    };
    /** Removes a member of a lower level than one's own; managers only. */
    KickTribeMember: {
      request: IMTribeUser;
      answer: ResultCode;
    };
    /** Makes a member an administrator, or an administrator a member; the owner only. */
    ChangeLevel: {
      request: IMTribeMemberLevel;
      answer: ResultCode;
    };
    /** One's own name in the tribe. */
    GetMyTribeNickname: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNicknameValue;
    };
    /** Sets one's own name in the tribe. */
    SetMyTribeNickname: {
      request: IMTribeNickname;
      answer: ResultCode;
    };
    /** Sets the name in the tribe of a member of a lower level; managers only. */
    SetTribeMemberNicknameByAdmin: {
      request: IMTribeNickname;
      answer: ResultCode;
    };
    /** Which of the tribe's messages count: 0 all and shown, 1 all and not shown, 2 none. */
    SetMsgRemindType: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Which of the tribe's messages count. */
    GetMsgRemindType: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** Who may join: 0 everybody, 1 by a password, 2 when a manager allows it, 3 who is invited; managers only. */
    SetAuthType: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Who may join. */
    GetAuthType: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** The password to join by; managers only. */
    GetJoinPwd: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeTextValue;
    };
    /** Sets the password to join by; managers only. */
    SetJoinPwd: {
      request: IMTribeText;
      answer: ResultCode;
    };
    /** Whether members see what was written before they joined: 0 or 1. */
    IsAllowShowChatRecordBeforeJoin: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** Whether members see what was written before they joined: 0 or 1; managers only. */
    SetAllowShowChatRecordBeforeJoin: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Who may mention all members at once: 0 managers, 1 everybody; managers only. */
    SetAtAllPermission: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Who may mention all members at once. */
    GetAtAllPermission: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** Whether those who are no members may look at it: 0 or 1; managers only. */
    SetAllowVisitor: {
      request: IMTribeNumber;
      answer: ResultCode;
    };
    /** Whether those who are no members may look at it: 0 or 1. */
    IsAllowVisitor: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** Puts a user on the tribe's black list; managers only. */
    AddTribeBlack: {
      request: IMTribeUser;
      answer: ResultCode;
    };
    /** Takes a user off the tribe's black list; managers only. */
    DelTribeBlack: {
      request: IMTribeUser;
      answer: ResultCode;
    };
    /** Who is on the tribe's black list; managers only. */
    GetTribeBlackList: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & TribeBlackItems;
    };
    /** Logs the account into its tribes; says so when it is already. */
    InitTribe: {
      request: Empty;
      answer: ResultCode;
    };
    /** How many visitors there were since they were last cleared; managers only. */
    GetVisitorCount: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeNumberValue;
    };
    /** Closes the tribe; the owner only. */
    CloseTribe: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode;
    };
    /** The names to show in the tribe of those of the users who are members. */
    GetListDNick: {
      request: IMTribeNickRequest;
      answer: ResultCode & IMTribeDisplayNicks;
    };
    /** All members of a multi-chat. */
    GetMultiChatMembers: {
      request: TribemgrIMTribeRequest;
      answer: ResultCode & IMTribeMembers;
    };
    /** Renames a multi-chat; every member may. */
    ChangeMultiName: {
      request: IMMultiChatName;
      answer: ResultCode;
    };
    /** Requests to join, and invitations, with what became of them. */
    GetTribeVerifyMsgs: {
      request: IMTribeVerifyPage;
      answer: ResultCode & TribeVerifyMsgs;
    };
    /** Allows somebody to join; managers only. */
    AllowJoinTribe: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** Refuses a request to join; managers only. */
    RefuseJoinTribe: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** Refuses a request to join and puts who asked on the black list; managers only. */
    AddToTribeBlack: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** Accepts an invitation. */
    AllowInviteJoinTribe: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** Refuses an invitation. */
    RefuseInviteJoinTribe: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** Takes a verification message off the account's own list. */
    DeleteTribeVerifyMsgs: {
      request: IMTribeVerifyAction;
      answer: ResultCode;
    };
    /** How many tribes the account has, and how many of them are not closed. */
    GetEnableTribeNum: {
      request: Empty;
      answer: { code: number; subcode: number; result: IMEnableTribeNum };
    };
  };
  "im.tribemsg": {
    /** The new messages; they count as read when the conversation's window can be seen. */
    GetNewMsg: {
      request: TribemsgIMPageRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** The new messages of the time logged out; marks them read if no others are unread. */
    GetOfflineMsg: {
      request: TribemsgInConversation;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** The new messages; marks nothing read. */
    PeekNewMsg: {
      request: TribemsgIMPageRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** The new messages that came while nobody was logged in; marks nothing read. */
    PeekOfflineMsg: {
      request: TribemsgInConversation;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** A page of the server's history. */
    GetRemoteHisMsg: {
      request: TribemsgIMPageRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** A page of the history on this machine. */
    GetLocalHisMsg: {
      request: TribemsgIMPageRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** Removes messages from this machine for good; answers their number. */
    DeleteLocalMsg: {
      request: TribemsgIMDeleteRequest;
      answer: ResultCode & IMCount;
    };
    /** The number of unread messages of a conversation. */
    GetUnreadCount: {
      request: TribemsgInConversation;
      answer: ResultCode & IMCount;
    };
    /** The unread counts of several conversations; of all that have messages if none is named. */
    GetUnreadCountInBulk: {
      request: TribemsgIMConversations;
      answer: ResultCode & TribemsgIMUnreads;
    };
    /** Marks every message received so far as read; nobody else is told. */
    SetMsgRead: {
      request: TribemsgInConversation;
      answer: ResultCode;
    };
    /** The newest received message up to which everything is read; 0 when there is none. */
    GetReadedBoundary: {
      request: TribemsgInConversation;
      answer: ResultCode & IMMsgPosition;
    };
    /** Sends a message; how it went on comes as onSendMsgStatus. */
    SendNormalTribeMsg: {
      request: TribemsgSendMsgRequest;
      answer: ResultCode;
    };
    /** Sends a message that failed again. */
    ReSendChatMsg: {
      request: TribemsgIMResendRequest;
      answer: ResultCode;
    };
    /** Sends a message that failed again, and tries a lost link at once. */
    FastReSendChatMsg: {
      request: TribemsgIMResendRequest;
      answer: ResultCode;
    };
    /** Sends a message on to several conversations; the stored one when the body is empty. */
    ForwardChatMsg: {
      request: TribemsgForwardMsgRequest;
      answer: ResultCode;
    };
    /** Fetches messages from the server to this machine. */
    RoamMsg: {
      request: TribemsgIMRoamRequest;
      answer: ResultCode & IMRoamed;
    };
    /** Forgets how far the history on this machine is complete, so that it is fetched anew. */
    ClearRoamedTime: {
      request: TribemsgInConversation;
      answer: ResultCode;
    };
    /** Whether the server hands out history. */
    GetRoamStatus: {
      request: Empty;
      answer: ResultCode & IMRoamStatus;
    };
    /** Switches the server's history on or off. */
    SetRoamStatus: {
      request: IMSetRoamRequest;
      answer: ResultCode;
    };
    /** Takes an own message back. */
    DoChatMsgWithdraw: {
      request: TribemsgIMWithdrawRequest;
      answer: ResultCode;
    };
    /** Lets the user edit a picture and sends the result to several conversations. */
    EditPic2SendMsg: {
      request: TribemsgEditPicRequest;
      answer: ResultCode;
    };
    /** Makes the body of a typed text: shortcuts of emotions become tokens, the rest stays text. */
    ConvertMsgText2Emotion: {
      request: EmotionTextRequest;
      answer: ResultCode & EmotionText;
    };
    /** The message with this identifier. */
    SearchMsgByID: {
      request: TribemsgIMMsgRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** Searches the messages of a conversation. */
    SearchDBMsg: {
      request: TribemsgIMSearchRequest;
      answer: ResultCode & TribemsgSearchAnswer;
    };
    /** Searches the messages of a conversation, or of all when none is named. */
    SearchDBMsg2: {
      request: TribemsgIMSearchRequest;
      answer: ResultCode & TribemsgSearchAnswer;
    };
    /** The conversations with at least one message that fits. */
    SearchDBMsgCid: {
      request: TribemsgSearchCidRequest;
      answer: ResultCode & TribemsgSearchCidAnswer;
    };
    /** Searches the messages of the members whom the account pays attention to. */
    SearchAttentionMsg: {
      request: TribemsgIMSearchRequest;
      answer: ResultCode & TribemsgSearchAnswer;
    };
    /** Pictures of a conversation. */
    GetMsgPicture: {
      request: TribemsgIMPictureRequest;
      answer: ResultCode & IMPictures;
    };
    /** A page of the server's messages that mention the account. */
    RoamTribeAtMsgs: {
      request: TribemsgIMPageRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** Whom a message mentions; an own one unless its sender is named. */
    GetSendMsgTribeAtInfo: {
      request: SentMsgRequest;
      answer: ResultCode & IMTribeAt;
    };
    /** The messages around a mention, from the server. */
    RoamTribeAtMsgContext: {
      request: IMAtContextRequest;
      answer: ResultCode & TribemsgIMMessagePage;
    };
    /** Marks mentions of the account as read; all unread ones when none are named. */
    SetTribeAtMsgsReaded: {
      request: TribemsgIMMsgsRequest;
      answer: ResultCode;
    };
    /** The number of unread mentions, and how far the own messages named were read. */
    GetTribeAtMsgUnreadCount: {
      request: TribemsgIMMsgsRequest;
      answer: ResultCode & IMAtUnread;
    };
    /** Who has read an own message that mentions, and who has not. */
    GetTribeAtMsgUnreadUsers: {
      request: TribemsgIMMsgRequest;
      answer: ResultCode & IMAtReaders;
    };
    /** Bounds the number of new messages kept in memory; 0 sets the engine's own bound. */
    SetNewMsgMaxCache: {
      request: IMMaxCacheRequest;
      answer: ResultCode;
    };
    /** Whether a member, or all, can be mentioned, and the name to write. */
    AtTribeMember: {
      request: IMAtMemberRequest;
      answer: ResultCode & IMAtMember;
    };
    /** The present content of a message that only names it. */
    GetDynamicMsg: {
      request: DynamicMsgRequest;
      answer: ResultCode & DynamicMsgAnswer;
    };
  };
  "im.virtualmsg": {
    /** The new messages; they count as read when the conversation's window can be seen. */
    GetNewMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** The new messages; marks nothing read. */
    PeekNewMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** A page of the history on this machine. */
    GetLocalHisMsg: {
      request: IMPageRequest;
      answer: ResultCode & IMMessagePage;
    };
    /** The number of unread messages of a conversation. */
    GetUnreadCount: {
      request: InConversation;
      answer: ResultCode & IMCount;
    };
    /** The unread counts of several conversations; of all that have messages if none is named. */
    GetUnreadCountInBulk: {
      request: IMConversations;
      answer: ResultCode & IMUnreads;
    };
    /** Marks every message received so far as read; nobody else is told. */
    SetMsgRead: {
      request: InConversation;
      answer: ResultCode;
    };
    /** The newest received message up to which everything is read; 0 when there is none. */
    GetReadedBoundary: {
      request: InConversation;
      answer: ResultCode & IMMsgPosition;
    };
    /** Removes messages from this machine for good; answers their number. */
    DeleteLocalMsg: {
      request: IMDeleteRequest;
      answer: ResultCode & IMCount;
    };
  };
}

/** Events that a page raises itself, and their payload. */
export interface PageEvents {
  /** What the person sees of a conversation, raised at each change. */
  chatWindowState: ChatWindowState;
  /** Switches translation for the whole host; onTranslateSettingNotify follows. */
  translateSetting: TranslateSetting;
}
