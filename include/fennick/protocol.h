/* The tool protocol for tool packs in any language: the names a tool sends and
 * receives, their fixed numbers, and where the control serves the clipboard on
 * the session bus. docs/protocol.md tells the conversation and the payloads.
 *
 * Every message is the broadcast signal FENNICK_PROTOCOL_INTERFACE.Message
 * (s name, i wParam, x lParam). A request carries FENNICK_PROTOCOL_NUMBER in
 * wParam (the number the tool got on its command line) and a cookie of the
 * tool's own in lParam, which comes back in the reply. Blocks travel as sealed
 * memfds holding exactly their bytes. Plain C, constants only. */
#ifndef FENNICK_PROTOCOL_H
#define FENNICK_PROTOCOL_H

#define FENNICK_PROTOCOL_NUMBER 10

/* The bus. Messages go out from FENNICK_BUS_PATH with no destination. */
#define FENNICK_BUS_NAME "org.selvane.FennickAddin"
#define FENNICK_BUS_PATH "/org/selvane/FennickAddin"
#define FENNICK_PROTOCOL_INTERFACE "org.selvane.FennickAddin.Protocol"
#define FENNICK_PROTOCOL_MEMBER "Message"
/* OpenClipboard() -> b, EmptyClipboard(), SetClipboardData(s format, h fd),
 * GetClipboardData(s format) -> h fd, CloseClipboard(), TakeBlock(u handle) -> h fd. */
#define FENNICK_CLIPBOARD_INTERFACE "org.selvane.FennickAddin.Clipboard"

/* Clipboard formats, by name and number. */
#define FENNICK_FORMAT_EMBROIDERY_FILE "QXEmbroideryFile"             /* 32205 */
#define FENNICK_FORMAT_MULT_EMBROIDERY_FILES "QXMultEmbroideryFiles"  /* 32225 */

/* Requests, from a tool, with wParam FENNICK_PROTOCOL_NUMBER. */
#define FENNICK_MSG_CALL "QXCall"                                   /* 32204 */
#define FENNICK_MSG_GET_PREV_FILE "QXGetPrevFile"                   /* 32215 */
#define FENNICK_MSG_GET_FIRST "QXGetFirst"                          /* 32216 */
#define FENNICK_MSG_GET_LAST "QXGetLast"                            /* 32217 */
#define FENNICK_MSG_GET_SEL_EMB "QXGetSelEmb"                       /* 32226 */
#define FENNICK_MSG_REQUEST_SAVE "QXRequestSave"                    /* 32209 */
#define FENNICK_MSG_REQ_MULTI_SAVE "QXReqMultiSave"                 /* 32224 */
#define FENNICK_MSG_GET_WHOLE_FILE "QXGetWholeFile"                 /* 32211 */
#define FENNICK_MSG_REQ_COLOR_ARRAY "QXReqColorArray"               /* 32214 */
#define FENNICK_MSG_REQ_THREAD_COLOR_ARRAY "QXReqThreadColorArray"  /* 32223 */
#define FENNICK_MSG_GET_FILE_TYPE_LIST "QXGetFileTypeList"          /* 32220 */
#define FENNICK_MSG_MESSAGE_RECEIVED "QXMessageReceived"            /* 32218 */
#define FENNICK_MSG_PLUG_IN_ENDED "Plug-in ended"                   /* 32210 */

/* Replies, from the control, with the request's lParam. */
#define FENNICK_MSG_CALLBACK "QXCallback"                           /* 32203 */
#define FENNICK_MSG_EMB_SEL_CB "QXEmbSelCB"                         /* 32227 */
#define FENNICK_MSG_FILE_SAVED "QXFileSaved"                        /* 32219 */
#define FENNICK_MSG_WHOLE_FILE "QXWholeFile"                        /* 32212 */
#define FENNICK_MSG_COLOR_ARRAY "QXColorArray"                      /* 32213 */
#define FENNICK_MSG_THREAD_COLOR_ARRAY "QXThreadColorArray"         /* 32222 */
#define FENNICK_MSG_FILE_TYPE_LIST "QXFileTypeList"                 /* 32221 */

/* From the control when it unloads, wParam and lParam 0: tools end. */
#define FENNICK_MSG_PLUG_IN_STOP "QXPlugInStop"                     /* 32208 */

#endif
