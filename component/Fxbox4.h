// The exported C functions of the library, for hosts in any language.
#pragma once

#include <unknwn.h>

#include "base/Export.h"

// The four functions that the component runtime finds by name. On Windows the module-definition
// file exports them, so that nobody links to them by accident.
#ifdef _WIN32
#define FXBOX_MODULE_API
#else
#define FXBOX_MODULE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// A creator of filters (core/AnimChain.h) that knows this module's own classes without any
// registration, and the registered filter classes of other modules. *result carries a reference and
// is null on failure. Thread-safe. The component runtime must be initialised on the calling thread
// on Windows.
FXBOX_API HRESULT STDAPICALLTYPE FxboxCreateCreator(REFIID iid, void** result);

// The class table of this module, in sort order; see core/FilterClass.h. For hosts built by the
// same compiler. Lives as long as the module. `count` may be null.
struct FilterClass;
FXBOX_API const struct FilterClass* STDAPICALLTYPE FxboxFilterClasses(int* count);

// For a host without a loop of its own: handles the events of open dialogs, on the thread that
// opened them. With `wait` it sleeps until there is one. S_FALSE where no dialog was opened or the
// window system has ended.
FXBOX_API HRESULT STDAPICALLTYPE FxboxPumpEvents(BOOL wait);

// Lends threads (base/AnimWorkers.h) to all pulls of the process, in place of those lent before;
// null takes them back, and everything runs on the thread that pulls. Holds a reference until the
// next call, and pulls that run keep theirs to their end: call it with null before the workers'
// module goes. Gives back to the system the memory that is kept for further pictures: blocks of
// pictures that are gone, half a gigabyte of them at most, each for ten seconds and until the next
// picture comes or goes. Any thread.
struct IAnimWorkers;
FXBOX_API HRESULT STDAPICALLTYPE FxboxSetWorkers(struct IAnimWorkers* workers);

// Assigns a text to a KvString (base/KvString.h), for hosts that know it as a pointer alone: what
// IAnimHostPage::Localize of core/AnimHost.h has to fill in. A null text empties it. E_POINTER
// without a string.
FXBOX_API HRESULT STDAPICALLTYPE FxboxSetString(void* string, const char* text);

// The class object of a filter class, of the chain or of the creator. CLASS_E_CLASSNOTAVAILABLE and
// a null result for another id.
FXBOX_MODULE_API HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID iid,
                                                          void** result);

// S_OK while no object, class object or server lock lives, S_FALSE otherwise. The memory that is
// kept for further pictures goes back to the system with S_OK.
FXBOX_MODULE_API HRESULT STDAPICALLTYPE DllCanUnloadNow(void);

// Enters all classes for the whole machine (on Linux: for the user, who has a registry of their
// own). On failure SELFREG_E_CLASS, and the registry is as it was.
FXBOX_MODULE_API HRESULT STDAPICALLTYPE DllRegisterServer(void);

// Removes all classes, and the category of filters with its last one. S_OK also where nothing was
// registered.
FXBOX_MODULE_API HRESULT STDAPICALLTYPE DllUnregisterServer(void);

#ifdef __cplusplus
}
#endif
