// Made from the tables of the library by ./dev generate; not edited by hand.

export const ComponentCode = {
  /** The module does not have the method. */
  E_NOTIMPL: -2147467263,
  /** Something is not ready, for instance nobody is logged in. */
  E_UNEXPECTED: -2147418113,
  /** The request cannot be used. */
  E_INVALIDARG: -2147024809,
} as const;
export type ComponentCode = (typeof ComponentCode)[keyof typeof ComponentCode];

export const EngineCode = {
  /** Success. */
  kEngineOk: 0,
  /** The account is not logged in. */
  kEngineNotLoggedIn: -1,
  /** There is no such user. */
  kEngineUnknownUser: -2,
  /** The password is wrong. */
  kEngineWrongPassword: -3,
  /** The token is unknown or too old. */
  kEngineTokenExpired: -4,
  /** The server could not be reached. */
  kEngineNoLink: -5,
  /** The server did not answer in time. */
  kEngineTimeout: -6,
  /** The message or request is over the size limit. */
  kEngineTooLarge: -7,
  /** There is nothing to send. */
  kEngineEmpty: -8,
  /** There is no such message or conversation. */
  kEngineNotFound: -9,
  /** The local or the server's store failed. */
  kEngineStorage: -10,
  /** The server refuses: it is not allowed now. */
  kEngineRefused: -11,
  /** Too many operations of this account are open. */
  kEngineBusy: -12,
  /** The account's server cannot do this. */
  kEngineUnsupported: -13,
  /** The server does not know any more how far the account had read. */
  kEnginePositionLost: -14,
  /** A store was damaged, missing or behind what it was; a login that succeeds has this as its subcode. */
  kEngineDamaged: -15,
} as const;
export type EngineCode = (typeof EngineCode)[keyof typeof EngineCode];

export const FileOwnerType = {
  /** A one-to-one conversation, named by the user it is held with. */
  kFileOwnerUser: 0,
  /** A tribe. */
  kFileOwnerTribe: 3,
} as const;
export type FileOwnerType = (typeof FileOwnerType)[keyof typeof FileOwnerType];

export const IMCIDType = {
  /** A tribe. */
  kCIDTribe: 3,
} as const;
export type IMCIDType = (typeof IMCIDType)[keyof typeof IMCIDType];

export const IMContactStatus = {
  /** Not there, or not to be seen by the account. */
  kContactOffline: 0,
  /** The user is there. */
  kContactOnline: 1,
} as const;
export type IMContactStatus = (typeof IMContactStatus)[keyof typeof IMContactStatus];

export const IMContactVerifyType = {
  /** A request that waits for a decision. */
  kContactAsked: 1,
  /** The account agreed. */
  kContactAgreed: 2,
  /** The same, and who asked is a contact in turn. */
  kContactAgreedAndAdded: 3,
  /** The account refused. */
  kContactRefused: 4,
  /** Refused, and who asked is on the black list. */
  kContactBlacked: 5,
  /** Put aside; it may still be decided on. */
  kContactIgnored: 6,
  /** Reported and put aside; it may still be decided on. */
  kContactReported: 7,
  /** An answer: the user is a contact now. */
  kContactAnsweredYes: 8,
  /** An answer: both are contacts of each other now. */
  kContactAnsweredAndAdded: 9,
  /** An answer: the request was refused. */
  kContactAnsweredNo: 10,
} as const;
export type IMContactVerifyType = (typeof IMContactVerifyType)[keyof typeof IMContactVerifyType];

export const IMFileSearchMethod = {
  /** The names of the files. */
  kSearchFileNames: 0,
} as const;
export type IMFileSearchMethod = (typeof IMFileSearchMethod)[keyof typeof IMFileSearchMethod];

export const IMMsgStatus = {
  /** On its way. */
  kMsgSending: 0,
  /** It is in the server's archive. */
  kMsgSent: 1,
  /** It was not sent and may be sent again. */
  kMsgFailed: 2,
  /** A message from somebody else. */
  kMsgReceived: 3,
  /** Its sender took it back; the body is empty. */
  kMsgWithdrawn: 4,
} as const;
export type IMMsgStatus = (typeof IMMsgStatus)[keyof typeof IMMsgStatus];

export const IMMsgType = {
  /** Text, with pictures and emotions as tokens. */
  kMsgText: 0,
  /** A picture. */
  kMsgPicture: 1,
  /** An audio recording. */
  kMsgAudio: 2,
  /** A file. */
  kMsgFile: 3,
  /** An emotion. */
  kMsgEmotion: 4,
  /** A window shake, without text. */
  kMsgShake: 5,
  /** The sender's typing state; never stored. */
  kMsgInputStatus: 6,
} as const;
export type IMMsgType = (typeof IMMsgType)[keyof typeof IMMsgType];

export const IMNodeType = {
  /** A file. */
  kNodeFile: 0,
  /** A folder. */
  kNodeFolder: 1,
} as const;
export type IMNodeType = (typeof IMNodeType)[keyof typeof IMNodeType];

export const IMReadFlag = {
  /** Not read yet. */
  kMsgUnread: 0,
  /** Read; of an own message, that the peer reported so. */
  kMsgRead: 1,
} as const;
export type IMReadFlag = (typeof IMReadFlag)[keyof typeof IMReadFlag];

export const IMRoaming = {
  /** The server does not hand out history. */
  kRoamingOff: 0,
  /** The server hands out history. */
  kRoamingOn: 1,
} as const;
export type IMRoaming = (typeof IMRoaming)[keyof typeof IMRoaming];

export const IMTransferStatus = {
  /** Nothing moves. */
  kTransferIdle: 0,
  /** It waits for its turn or for the link. */
  kTransferWaiting: 1,
  /** It is under way. */
  kTransferRunning: 2,
  /** The whole file is here. */
  kTransferDone: 3,
  /** It failed; another try goes on where it ended. */
  kTransferFailed: 4,
  /** It was cancelled. */
  kTransferCancelled: 5,
} as const;
export type IMTransferStatus = (typeof IMTransferStatus)[keyof typeof IMTransferStatus];

export const IMTransferType = {
  /** The file has not moved. */
  kTransferNone: 0,
  /** To the server. */
  kTransferUpload: 1,
  /** To this machine. */
  kTransferDownload: 2,
} as const;
export type IMTransferType = (typeof IMTransferType)[keyof typeof IMTransferType];

export const IMTribeType = {
  /** A tribe. */
  kNormalTribe: 0,
  /** A multi-chat: made ad hoc, everybody may invite. */
  kMultiChat: 1,
} as const;
export type IMTribeType = (typeof IMTribeType)[keyof typeof IMTribeType];

export const InputStatus = {
  /** The peer does not type. */
  kInputStopped: 0,
  /** The peer types. */
  kInputTyping: 1,
} as const;
export type InputStatus = (typeof InputStatus)[keyof typeof InputStatus];

export const TribeAtMsgType = {
  /** The message mentions nobody. */
  kAtNobody: 0,
  /** It mentions the members named. */
  kAtMembers: 1,
  /** It mentions all members. */
  kAtAll: 2,
} as const;
export type TribeAtMsgType = (typeof TribeAtMsgType)[keyof typeof TribeAtMsgType];

export const TribeAtRelation = {
  /** It mentions nobody, or others only. */
  kAtRelationNone: 0,
  /** It mentions the account by name. */
  kAtRelationMember: 1,
  /** It mentions all members. */
  kAtRelationAll: 2,
  /** An own message that mentions somebody. */
  kAtRelationSender: 3,
} as const;
export type TribeAtRelation = (typeof TribeAtRelation)[keyof typeof TribeAtRelation];

export const TribeMemberBasicStatus = {
  /** Not logged in. */
  kMemberOffline: 0,
  /** Logged in. */
  kMemberOnline: 1,
} as const;
export type TribeMemberBasicStatus = (typeof TribeMemberBasicStatus)[keyof typeof TribeMemberBasicStatus];

export const TribeMemberLevel = {
  /** No member. */
  kTribeNobody: 0,
  /** A member. */
  kTribeMember: 1,
  /** An administrator. */
  kTribeManager: 2,
  /** The owner. */
  kTribeOwner: 3,
} as const;
export type TribeMemberLevel = (typeof TribeMemberLevel)[keyof typeof TribeMemberLevel];

export const TribeModifyKey = {
  /** The name. */
  kTribeKeyName: 1,
  /** The description. */
  kTribeKeyDescription: 2,
  /** The picture. */
  kTribeKeyPortrait: 3,
  /** The class. */
  kTribeKeyClass: 4,
  /** The bulletin. */
  kTribeKeyBulletin: 5,
  /** Who may join. */
  kTribeKeyAuthType: 6,
  /** The password to join by; the value is not told. */
  kTribeKeyJoinPassword: 7,
  /** Whether members see what was written before they joined. */
  kTribeKeyOpenHistory: 8,
  /** Whether it takes visitors. */
  kTribeKeyVisitors: 9,
  /** Who may mention all members at once. */
  kTribeKeyAtAll: 10,
  /** The tribe's level. */
  kTribeKeyLevel: 11,
  /** The picture beside its notices. */
  kTribeKeyNtfImage: 12,
  /** The mark of a business. */
  kTribeKeyBusinessImage: 13,
} as const;
export type TribeModifyKey = (typeof TribeModifyKey)[keyof typeof TribeModifyKey];

export const TribeVerifyType = {
  /** A request to join that waits for a decision. */
  kVerifyJoinAsked: 1,
  /** An invitation that waits for a decision. */
  kVerifyInvited: 2,
  /** A request that was allowed. */
  kVerifyJoinAllowed: 3,
  /** A request that was refused. */
  kVerifyJoinRefused: 4,
  /** An invitation that was accepted. */
  kVerifyInviteAccepted: 5,
  /** An invitation that was refused. */
  kVerifyInviteRefused: 6,
} as const;
export type TribeVerifyType = (typeof TribeVerifyType)[keyof typeof TribeVerifyType];
