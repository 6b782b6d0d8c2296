/* A host in plain C against the installed control library, built with what
 * pkg-config gives: the module entry points, a control's properties and
 * methods by dispatch id, and a block handed back by handle. Exits 1 on any
 * mismatch. */
#include <stdio.h>
#include <string.h>

#include <fennick/fennickaddin.h>
#include <fennick/protocol.h>

static int failures = 0;

static void Check(int ok, const char* what) {
  if (!ok) {
    fprintf(stderr, "mismatch: %s\n", what);
    ++failures;
  }
}

static void CheckClassId(void) {
  static const char kControlClassId[] = "{68F3B8D7-C90D-4681-8547-CEBB969143B4}";
  char whole[64];
  char cut[8];
  DllGetActiveXCLSID(whole, (int)sizeof whole);
  Check(strcmp(whole, kControlClassId) == 0, "DllGetActiveXCLSID gives the control's class id");
  memset(cut, 'x', sizeof cut);
  DllGetActiveXCLSID(cut, (int)sizeof cut);
  Check(strncmp(cut, kControlClassId, sizeof cut - 1) == 0 && cut[sizeof cut - 1] == '\0',
        "a short buffer gets the id's first 7 characters and a zero");
}

static void CheckName(FennickControl* control) {
  FennickVariant result;
  memset(&result, 0, sizeof result);
  Check(FennickInvoke(control, 3, NULL, 0, &result, 0) == 0, "Invoke 3 succeeds");
  Check(result.type == FENNICK_VT_BSTR && result.text != NULL && strcmp(result.text, "FennickAddin") == 0,
        "Name (id 3) is \"FennickAddin\"");
  FennickVariantClear(&result);
  Check(result.type == FENNICK_VT_EMPTY && result.text == NULL, "FennickVariantClear empties the variant");
}

static void CheckWriteFormats(FennickControl* control) {
  FennickVariant result;
  uint32_t handle;
  size_t size;
  const char* text;
  memset(&result, 0, sizeof result);
  Check(FennickInvoke(control, 9, NULL, 0, &result, 0) == 0, "Invoke 9 succeeds");
  Check(result.type == FENNICK_VT_I4 && result.i4 != 0, "GetWriteFormats (id 9) returns a handle");
  handle = (uint32_t)result.i4;
  size = FennickGlobalSize(handle);
  text = (const char*)FennickGlobalLock(handle);
  if (text == NULL || size == 0) {
    Check(0, "the write formats' block can be locked");
    return;
  }
  Check(text[size - 1] == '\0' && strlen(text) == size - 1, "the block is one zero-terminated text");
  Check(strncmp(text, "dst\r\nexp\r\n", 10) == 0, "the list starts with dst and exp");
  Check(strstr(text, "\r\npes\r\n") != NULL && strstr(text, "\r\njef\r\n") != NULL, "pes and jef are writable");
  Check(strstr(text, "pec\r\n") == NULL && strstr(text, "shv\r\n") == NULL, "read-only formats are not listed");
  Check(size > 2 && text[size - 3] == '\r' && text[size - 2] == '\n', "every line ends with CR LF");
  FennickGlobalUnlock(handle);
  Check(FennickGlobalFree(handle) == 0, "the caller frees the block");
}

int main(void) {
  FennickControl* control;
  CheckClassId();
  Check(strcmp(FENNICK_BUS_NAME, "org.selvane.FennickAddin") == 0 && FENNICK_PROTOCOL_NUMBER == 10,
        "the tool protocol's header is installed");
  Check(DllCanUnloadNow() != 0, "DllCanUnloadNow is true before any control lives");
  control = FennickCreateControl();
  if (control == NULL) {
    fprintf(stderr, "FennickCreateControl gave no control\n");
    return 1;
  }
  Check(DllCanUnloadNow() == 0, "DllCanUnloadNow is false while a control lives");
  CheckName(control);
  CheckWriteFormats(control);
  Check(FennickInvoke(control, 99, NULL, 0, NULL, 0) == (int32_t)0x80020003, "an unknown id is not a member");
  FennickDestroyControl(control);
  Check(DllCanUnloadNow() != 0, "DllCanUnloadNow is true again once the control is gone");
  if (failures == 0) printf("control host: every check passed\n");
  return failures == 0 ? 0 : 1;
}
