// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  Empty,
  ChatWindowState,
  DynamicMsgAnswer,
  EmotionText,
  IMCount,
  IMLoginGrant,
  IMMessagePage,
  IMMsgPosition,
  IMPictures,
  IMReadFlags,
  IMRoamStatus,
  IMRoamed,
  IMTribeClasses,
  IMUnreads,
  IMUserRequest,
  ResultCode,
  SearchAnswer,
  SearchCidAnswer,
  TranslateMsg,
  TranslateSetting,
} from "./records.ts";
import type {
  BroadcastMsgRequest,
  DynamicMsgRequest,
  EditPicRequest,
  EmotionTextRequest,
  ForwardMsgRequest,
  IMConversations,
  IMDeleteRequest,
  IMMaxCacheRequest,
  IMMsgRequest,
  IMMsgsRequest,
  IMPageRequest,
  IMPasswordLogin,
  IMPictureRequest,
  IMRoamRequest,
  IMSearchRequest,
  IMSetRoamRequest,
  IMShieldRequest,
  IMTokenLogin,
  IMTribeText,
  IMWithdrawRequest,
  InConversation,
  SearchCidRequest,
  SendMsgRequest,
  TranslateMsgRequest,
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
  "im.contact": Empty;
  "im.filetransfer": Empty;
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
    /** The new messages that came while nobody was logged in; marks read as GetNewMsg. */
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
      request: IMMsgRequest;
      answer: ResultCode;
    };
    /** Sends a message that failed again. */
    ReSendChatMsg: {
      request: IMMsgRequest;
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
    /** Turns the emotion shortcuts of a text into tokens. */
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
    /** The classes that a tribe can have. */
    GetAllClass: {
      request: Empty;
      answer: ResultCode & IMTribeClasses;
    };
    /** Renames a tribe; only its owner may. */
    SetTribeName: {
      request: IMTribeText;
      answer: ResultCode;
    };
  };
  "im.tribemsg": Empty;
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
