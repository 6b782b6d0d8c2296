/* The Fennick control for hosts in any language: create a control, call its
 * properties and methods by dispatch id with variants, announce the host the
 * control calls back, optionally give it dialogs of the host's own, and move
 * designs as blocks by handle. Plain C, no exception crosses it.
 *
 * Dispatch ids: 1 Width, 2 Height, 3 Name, 4 DockingPos (properties, read
 * only); 5 FileImport(), 6 FileImportTyped(string ext), 7 FitHoop(long cx,
 * long cy, long proportional, long hDesign), 8 GetFormatColors(string ext),
 * 9 GetWriteFormats(), 10 Save(long hDesign), 11 SaveAs(long hDesign),
 * 12 SortColorListByHue(long hDesign), 13 TEWillRun(), 14 TESetRun(),
 * 15 TEReSize(long hDes, float rot, float hz, float vt),
 * 16 ShowFennickPreferences(), 17 ColorSort(long hDesign). A method that
 * takes a handle frees its block; a handle returned is the caller's. Hoop
 * sizes are in tenths of a millimetre. */
#ifndef FENNICK_FENNICKADDIN_H
#define FENNICK_FENNICKADDIN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define FENNICK_API __attribute__((visibility("default")))

/* ---- Module entry points ---- */

/* Copies the control's class id, "{...}", with strncpy and puts a zero in
 * the buffer's last place. */
FENNICK_API void DllGetActiveXCLSID(char* buffer, int length);
/* Write or remove the registration files under
 * $XDG_DATA_HOME/fennick/controls/. 0, or 0x80040200 when the type library
 * step failed, 0x80040201 when the classes' step failed. */
FENNICK_API int32_t DllRegisterServer(void);
FENNICK_API int32_t DllUnregisterServer(void);

typedef struct FennickControl FennickControl;

/* What DllGetClassObject gives: a way to make a control. */
typedef struct FennickClassFactory {
  FennickControl* (*CreateInstance)(void);
} FennickClassFactory;
/* 0 with the factory filled for the control's class id; 0x80040111 for any other id. */
FENNICK_API int32_t DllGetClassObject(const char* classId, FennickClassFactory* factory);
/* Non-zero when no control lives. */
FENNICK_API int32_t DllCanUnloadNow(void);

/* ---- The control ---- */

FENNICK_API FennickControl* FennickCreateControl(void);
FENNICK_API void FennickDestroyControl(FennickControl* control);

enum FennickVariantType { FENNICK_VT_EMPTY = 0, FENNICK_VT_I4 = 3, FENNICK_VT_R4 = 4, FENNICK_VT_BSTR = 8 };

typedef struct FennickVariant {
  int32_t type; /* a FennickVariantType */
  int32_t i4;
  float r4;
  char* text; /* FENNICK_VT_BSTR: zero-terminated; a result's is freed by FennickVariantClear */
} FennickVariant;

/* Calls dispatch id `dispatchId` with `count` arguments in the interface's
 * order; with `put` non-zero a property is set (accepted, no effect). The
 * result goes to `result` (may be NULL). 0, or 0x80020003 for an unknown id,
 * 0x80004003 for a null control. */
FENNICK_API int32_t FennickInvoke(FennickControl* control, int32_t dispatchId, const FennickVariant* arguments,
                                  int32_t count, FennickVariant* result, int32_t put);
/* Frees a result's text and empties the variant. */
FENNICK_API void FennickVariantClear(FennickVariant* variant);

/* ---- The control's window (hosts with a Qt 6 application) ---- */

/* The control's tool bar window, made on the first call: a QWidget* under
 * `parent` (a QWidget* of the host, or NULL for a window of its own). It
 * lives until the control is destroyed, and while it lives tool packs talk
 * to the control on the session bus. NULL without a QApplication. Its width
 * and height are the properties Width and Height. */
FENNICK_API void* FennickCreateToolBar(FennickControl* control, void* parent);

/* Design commands a host sends the tool bar window; each works on the host's
 * current design through the host's callbacks. */
enum FennickCommand {
  FENNICK_CMD_SAVE = 206,
  FENNICK_CMD_OPEN = 207,
  FENNICK_CMD_NEW = 208,
  FENNICK_CMD_AUTO_BASTE = 32768,
  FENNICK_CMD_COLOR_SORT = 32769,
  FENNICK_CMD_NOTES = 32770,
  FENNICK_CMD_BITMAP = 32771,
  FENNICK_CMD_REDUCE_NEEDLES = 32772,
  FENNICK_CMD_PREFERENCES = 32773,
  FENNICK_CMD_FIT_HOOP = 32786
};
/* Sends command `commandId` (a FennickCommand, or a tool button's 32787 to
 * 32806) to the tool bar window. Non-zero when the window answers it; 0
 * without a window or for another id. */
FENNICK_API int32_t FennickSendCommand(FennickControl* control, int32_t commandId);
/* The text of a command for a menu or a tip: "New", "Open", ... into
 * `buffer`; its tip (the part after the line feed of its string) when `tip`
 * is non-zero. 0 for an unknown id. */
FENNICK_API int32_t FennickCommandText(int32_t commandId, int32_t tip, char* buffer, int32_t size);

/* ---- The host the control calls back (dispatch ids 2 to 12) ---- */

/* String results are written into `buffer` of `size` bytes, zero-terminated.
 * The flags are 0 or non-zero. */
typedef struct FennickHostCallbacks {
  void* context;
  void (*PrepareImport)(void* context);
  int32_t (*GetDesign)(void* context, int32_t* hDesign);
  int32_t (*PutDesign)(void* context, int32_t hDesign);
  int32_t (*NewDesign)(void* context);
  void (*GetHoopSize)(void* context, int32_t* width, int32_t* height);
  void (*GetFormatHoop)(void* context, const char* extension, int32_t* width, int32_t* height);
  void (*GetDesignExtension)(void* context, char* buffer, int32_t size);
  void (*GetImportExtension)(void* context, char* buffer, int32_t size);
  void (*GetSaveExtension)(void* context, char* buffer, int32_t size);
  /* split by colours on, colour limit, split by stitches on, stitch limit,
   * both orientations, rotate, shrink, shrink percent, PES version 5, ensure
   * trims, last word */
  void (*GetConversion)(void* context, const char* extension, int32_t values[11]);
  /* MinFill, MaxSL, MinSatin, MaxSatinSL, ApplyMinFill, ApplyMax,
   * ApplyMinSatin, ApplyMaxSL, Sensitivity less 6 */
  void (*GetResizeSettings)(void* context, int32_t values[9]);
} FennickHostCallbacks;

/* Announces the host in the running-object table; the table is copied. A
 * missing callback answers as an absent host would. */
FENNICK_API void FennickRegisterHost(const FennickHostCallbacks* host);
FENNICK_API void FennickRevokeHost(void);

/* ---- Dialogs of the host's own (optional) ---- */

enum FennickMessageButtons { FENNICK_MB_OK = 0, FENNICK_MB_OKCANCEL = 1, FENNICK_MB_YESNOCANCEL = 3, FENNICK_MB_YESNO = 4 };
enum FennickMessageAnswer { FENNICK_IDOK = 1, FENNICK_IDCANCEL = 2, FENNICK_IDYES = 6, FENNICK_IDNO = 7 };

typedef struct FennickUserInterfaceCallbacks {
  void* context;
  /* Returns a FennickMessageAnswer. */
  int32_t (*ShowMessage)(void* context, const char* text, const char* caption, int32_t buttons);
  void (*SetWaitCursor)(void* context, int32_t on);
  /* The design browser: the paths picked, each zero-terminated, one more
   * zero at the end, in `buffer` of `size` bytes. Returns how many. */
  int32_t (*ChooseDesigns)(void* context, char* buffer, int32_t size);
  /* A save dialog; `filter` holds pairs of "text|pattern|", `filterIndex`
   * counts from 1. Non-zero with the path in `buffer`, 0 when cancelled. */
  int32_t (*ChooseSaveName)(void* context, const char* filter, int32_t filterIndex, const char* fileTitle,
                            const char* folder, char* buffer, int32_t size);
  void (*ShowPreferences)(void* context, const char* title);
} FennickUserInterfaceCallbacks;

/* Gives the control these dialogs (the table is copied); NULL puts back the
 * library's own. A missing callback answers as a closed dialog. */
FENNICK_API void FennickSetUserInterface(const FennickUserInterfaceCallbacks* ui);

/* ---- Blocks by handle (handle 0 is none) ---- */

#define FENNICK_GMEM_MOVEABLE 0x0002u
#define FENNICK_GMEM_ZEROINIT 0x0040u
#define FENNICK_GMEM_DDESHARE 0x2000u

FENNICK_API uint32_t FennickGlobalAlloc(uint32_t flags, size_t size);
FENNICK_API size_t FennickGlobalSize(uint32_t handle);
FENNICK_API uint8_t* FennickGlobalLock(uint32_t handle);
/* Non-zero while the block stays locked. */
FENNICK_API int32_t FennickGlobalUnlock(uint32_t handle);
/* 0, or the handle itself when it is unknown. */
FENNICK_API uint32_t FennickGlobalFree(uint32_t handle);

#ifdef __cplusplus
}
#endif

#endif /* FENNICK_FENNICKADDIN_H */
