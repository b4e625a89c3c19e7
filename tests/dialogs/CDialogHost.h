/* A host of dialogs in plain C, which knows their interfaces and its own from the tables alone. */
#ifndef TESTS_DIALOGS_CDIALOGHOST_H
#define TESTS_DIALOGS_CDIALOGHOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { HOST_REGISTRY = 1, HOST_OPTIONAL = 2, HOST_PAGE = 4, HOST_MESSAGES = 8 };

typedef struct CDialogHost CDialogHost;

/* Called with each line as it is written, so that a test can act inside a call. */
typedef void (*CDialogHostHook)(void* context, const char* line);

/* A host with one reference; `lacks` are the interfaces that it does not have. */
CDialogHost* NewDialogHost(int lacks);
/* Its IUnknown; no reference is added. */
void* DialogHostUnknown(CDialogHost* host);
void SetDialogHostHook(CDialogHost* host, CDialogHostHook hook, void* context);
/* What was called, one line each, since the last ForgetDialogHostLog. Operations by their place:
 * "registry 7 INSTANCE", "messages 5 page=1 59925 0 4". */
const char* DialogHostLog(CDialogHost* host);
void ForgetDialogHostLog(CDialogHost* host);
/* Answers of Localize, by FxboxSetString; null for a host without words. */
void SetDialogHostWords(CDialogHost* host, const char* key, const char* words,
                        int32_t (*setString)(void*, const char*));
/* Result of every Post. */
void SetDialogHostAnswer(CDialogHost* host, intptr_t answer);
/* References that are held, the maker's among them. */
long DialogHostReferences(CDialogHost* host);
void ReleaseDialogHost(CDialogHost* host);

#ifdef __cplusplus
}
#endif
#endif
