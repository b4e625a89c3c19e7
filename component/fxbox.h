/* The library for programs in C, and in any language that calls C: this one file is all they need.
 *
 * FxboxRender applies a chain of filters to a picture in memory; a first picture takes ten lines
 * (README.md). Behind it lie the interfaces, as tables of functions, for hosts that pull bands and
 * parts, keep a chain while its parameters change, or write filters of their own.
 *
 * Link with fxbox4 (pkg-config fxbox4); on Windows with Fxbox4.lib or libFxbox4.dll.a.
 * All texts are zero-terminated. Here they are UTF-8; in the interfaces they are in the code page
 * 1252. */
#ifndef FXBOX_H
#define FXBOX_H

#include <stddef.h>
#include <stdint.h>

#ifdef _WIN32
#define FXBOX_STDCALL __stdcall
#else
#define FXBOX_STDCALL
#endif
#ifndef FXBOX_API
#define FXBOX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* --- pictures in, pictures out */

/* A picture in memory. Bytes of a pixel: red, green, blue, and with 4 channels alpha, of which 255
 * is opaque (not multiplied into the colour). Rows and pixels lie at any address. */
typedef struct FxboxImage {
  uint8_t* pixels;   /* of the top row; of an input they are only read */
  ptrdiff_t rowStep; /* bytes to the row below; negative where rows lie bottom up; 0: no gaps */
  int32_t width;     /* in pixels, 1 or more */
  int32_t height;
  int32_t channels; /* 3 or 4 */
} FxboxImage;

/* What FxboxRender answers. */
enum {
  FXBOX_OK = 0,
  FXBOX_STOPPED = 1,      /* by the progress function or FxboxStop */
  FXBOX_BAD_CHAIN = 2,    /* the chain text is wrong; the error says where */
  FXBOX_BAD_ARGUMENT = 3, /* the picture or an option is wrong */
  FXBOX_NO_MEMORY = 4,
  FXBOX_FAILED = 5 /* a filter failed, or the result would be larger than allowed */
};

/* What went wrong. */
typedef struct FxboxError {
  int32_t status;
  int32_t item;      /* of the chain text, from 1; 0 where no item is to blame */
  int32_t line;      /* of the chain text, from 1; 0 where the place is not known */
  int32_t character; /* of that line, from 1, counted in bytes of code page 1252 */
  char filter[64];   /* the name in that item; empty where it is not known */
  char message[512]; /* in words for a user, with item and place in them; one line */
} FxboxError;

/* Stops renders from other threads. */
typedef struct FxboxStopper FxboxStopper;

/* Everything that may be left alone. Set `size` and zero the rest. */
typedef struct FxboxRenderOptions {
  size_t size;       /* sizeof(FxboxRenderOptions) */
  int32_t lenient;   /* 1: skip what is unknown in the chain text instead of refusing it */
  int32_t channels;  /* of the result, 3 or 4; 0: 4 where the input has 4 or the result has
                        transparency, else 3 */
  double zoom;       /* size of the picture over its full size, for a preview; 0: 1 */
  int32_t fullWidth; /* of the same picture at full size; 0: as the picture */
  int32_t fullHeight;
  int32_t left; /* the part of the result that is wanted, counted from its top left corner; */
  int32_t top;  /* with width 0 all of it */
  int32_t width;
  int32_t height;
  int64_t mostPixels; /* no picture on the way may have more; 0: 500 million */
  /* Called on the thread of FxboxRender with the share of the input that the filters took, 0 to 1.
   * 0 as a result stops. May be null. It must not throw or jump. */
  int32_t (*progress)(void* context, double share);
  void* context;
  FxboxStopper* stopper; /* may be null; may serve several renders */
} FxboxRenderOptions;

/* Applies a chain text such as "ZNFilter.Sepia.1(Sepia=080)" to a picture; "" gives a copy.
 *
 * The input and the texts stay the caller's and are not kept. *result is a new picture, to be given
 * to FxboxFreeImage; null on failure. `options` and `error` may be null; `error` is written on
 * success, too. Any thread may call, several at once. Everything runs on the calling thread (save
 * where FxboxSetWorkers lent others). Answers FXBOX_OK or another value of the list above; nothing
 * is thrown. */
FXBOX_API int32_t FXBOX_STDCALL FxboxRender(const FxboxImage* input, const char* chain,
                                            const FxboxRenderOptions* options, FxboxImage** result,
                                            FxboxError* error);

/* Frees a result of FxboxRender, on any thread; null is allowed. */
FXBOX_API void FXBOX_STDCALL FxboxFreeImage(FxboxImage* image);

/* A new stopper, to be given to FxboxFreeStopper when no render uses it any more; null without
 * memory. */
FXBOX_API FxboxStopper* FXBOX_STDCALL FxboxNewStopper(void);
/* All renders with this stopper, those under way and later ones, answer FXBOX_STOPPED soon. Any
 * thread; not from a signal handler. */
FXBOX_API void FXBOX_STDCALL FxboxStop(FxboxStopper* stopper);
FXBOX_API void FXBOX_STDCALL FxboxFreeStopper(FxboxStopper* stopper);

#ifdef __cplusplus
}
#else

/* --- the component runtime, as far as the interfaces need it */

#include <stdbool.h>

#ifdef _WIN32
#include <unknwn.h>
#define FXBOX_CALL STDMETHODCALLTYPE
#undef CreateDialog /* a macro of the system's, and an operation here */
#else
#define FXBOX_CALL
typedef int32_t HRESULT;
typedef struct GUID {
  uint32_t Data1;
  uint16_t Data2, Data3;
  uint8_t Data4[8];
} GUID;
typedef struct IUnknown IUnknown;
typedef struct IUnknownVtbl {
  HRESULT(FXBOX_CALL* QueryInterface)(IUnknown* self, const GUID* iid, void** result);
  uint32_t(FXBOX_CALL* AddRef)(IUnknown* self);
  uint32_t(FXBOX_CALL* Release)(IUnknown* self);
} IUnknownVtbl;
struct IUnknown {
  const IUnknownVtbl* lpVtbl;
};
static const GUID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_FAIL ((HRESULT)0x80004005u)
#define E_NOINTERFACE ((HRESULT)0x80004002u)
#endif

/* Every table begins so. An object is a pointer to its table; objects in and out are counted. */
#define FXBOX_UNKNOWN_SLOTS(Name)                                                   \
  HRESULT(FXBOX_CALL* QueryInterface)(Name * self, const GUID* iid, void** result); \
  uint32_t(FXBOX_CALL* AddRef)(Name * self);                                        \
  uint32_t(FXBOX_CALL* Release)(Name * self);

/* A creator of filters: IAnimFilterCreator. On Windows the calling thread has initialised the
 * component runtime. */
FXBOX_API HRESULT FXBOX_STDCALL FxboxCreateCreator(const GUID* iid, void** result);
/* Handles the events of open dialogs, for a host without a loop of its own. */
FXBOX_API HRESULT FXBOX_STDCALL FxboxPumpEvents(int wait);
/* Assigns a text to the string that IAnimHostPage::Localize hands in. */
FXBOX_API HRESULT FXBOX_STDCALL FxboxSetString(void* string, const char* text);

/* --- interfaces: made by scripts/interfaces.py */
/* clang-format off */
static const GUID FXBOX_ChainClassId = {0x6E280DD9, 0x4FF3, 0x4EB6, {0x8B, 0x56, 0xF7, 0xC4, 0x5A, 0x43, 0xC5, 0x1E}};
static const GUID FXBOX_CreatorClassId = {0x8E1F6E0B, 0x53C7, 0x4E0C, {0xA7, 0xC8, 0x1B, 0x5D, 0x0B, 0x2F, 0x4A, 0x96}};
static const GUID FXBOX_FilterCategory = {0x50988255, 0xCF5D, 0x4E19, {0x85, 0xBF, 0x9E, 0x17, 0xED, 0x51, 0xFF, 0x1D}};

typedef struct IAnimFilter IAnimFilter;
typedef struct IAnimFilterSrcCallsThis IAnimFilterSrcCallsThis;
typedef struct IAnimFilterDestCallsThis IAnimFilterDestCallsThis;
typedef struct IAnimFilterParameter IAnimFilterParameter;
typedef struct IAnimFilterChain IAnimFilterChain;
typedef struct IAnimFilterCreator IAnimFilterCreator;
typedef struct IAnimLinkable IAnimLinkable;
typedef struct IAnimIconPage IAnimIconPage;
typedef struct IAnimFilterIcon IAnimFilterIcon;
typedef struct IAnimFilterDialog IAnimFilterDialog;
typedef struct IAnimRunnable IAnimRunnable;
typedef struct IAnimMessageReceiver IAnimMessageReceiver;
typedef struct IAnimHostRegistry IAnimHostRegistry;
typedef struct IAnimHostOptional IAnimHostOptional;
typedef struct IAnimHostPage IAnimHostPage;
typedef struct IAnimHostMessages IAnimHostMessages;
typedef struct IAnimHostDrag IAnimHostDrag;
typedef struct IAnimRowReach IAnimRowReach;
typedef struct IAnimRowLender IAnimRowLender;
typedef struct AnimMessage {
  int32_t page, number;
  intptr_t first, second;
} AnimMessage;

static const GUID IID_IAnimFilter = {0x22E7124D, 0x0B5A, 0x449C, {0xBC, 0x15, 0x21, 0x3E, 0x7B, 0x98, 0x32, 0x4B}};
typedef struct IAnimFilterVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilter)
  /* The ProgID, when it is shorter than `size`; an empty text otherwise. */
  HRESULT(FXBOX_CALL* GetName)(IAnimFilter* self, char* buffer, int size);
  /* A new icon object of the class. E_NOINTERFACE and a null result when the class has none. */
  HRESULT(FXBOX_CALL* CreateIcon)(IAnimFilter* self, const GUID* iid, void** result);
  /* The rank by which a chain places the filter: 200 (crop) to 9500 (shadow), 5000 for most. */
  HRESULT(FXBOX_CALL* GetOrder)(IAnimFilter* self, int* order);
  /* The constant by which lists of classes are sorted. */
  HRESULT(FXBOX_CALL* GetKind)(IAnimFilter* self, int* kind);
  /* The neighbours. E_NOINTERFACE and a null result without one. */
  HRESULT(FXBOX_CALL* GetDestination)(IAnimFilter* self, const GUID* iid, void** result);
  HRESULT(FXBOX_CALL* GetSource)(IAnimFilter* self, const GUID* iid, void** result);
  /* Link both directions at once; null clears this side only. */
  HRESULT(FXBOX_CALL* SetDestination)(IAnimFilter* self, void* destination);
  HRESULT(FXBOX_CALL* SetSource)(IAnimFilter* self, void* source);
  /* A new dialog object of the class, which knows the ProgID. E_NOINTERFACE when the class has
   * none. */
  HRESULT(FXBOX_CALL* CreateDialog)(IAnimFilter* self, const GUID* iid, void** result);
  /* Stores the class id and takes the name from the class registry. */
  HRESULT(FXBOX_CALL* SetClassId)(IAnimFilter* self, const GUID* classId);
} IAnimFilterVtbl;
struct IAnimFilter {
  const IAnimFilterVtbl* lpVtbl;
};

/* What the source calls on the filter. */
static const GUID IID_IAnimFilterSrcCallsThis = {0x96AFC5EB, 0x1824, 0x4836, {0xBA, 0x35, 0x58, 0x0C, 0x97, 0x57, 0x23, 0xF3}};
typedef struct IAnimFilterSrcCallsThisVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterSrcCallsThis)
  /* The source's picture: its size, where its shown part lies, and how large that part is. They
   * count from the next Prepare on. */
  HRESULT(FXBOX_CALL* SetPictureSize)(IAnimFilterSrcCallsThis* self, int width, int height);
  HRESULT(FXBOX_CALL* SetOffset)(IAnimFilterSrcCallsThis* self, int x, int y);
  HRESULT(FXBOX_CALL* SetExtent)(IAnimFilterSrcCallsThis* self, int width, int height);
  /* The size of the same picture at full resolution. */
  HRESULT(FXBOX_CALL* SetTargetSize)(IAnimFilterSrcCallsThis* self, int width, int height);
  /* At what size the picture is wanted; -1, -1 when nobody says. `aspect` is width over height. */
  HRESULT(FXBOX_CALL* QuerySize)(IAnimFilterSrcCallsThis* self, int* width, int* height, double aspect);
  /* Size of the picture over its full size, 1.0 being that: what counts in pixels scales by it. */
  HRESULT(FXBOX_CALL* SetZoom)(IAnimFilterSrcCallsThis* self, double zoom);
  /* A pair of numbers on its way to the destination, and one from there. */
  HRESULT(FXBOX_CALL* SetMark)(IAnimFilterSrcCallsThis* self, int a, int b);
  HRESULT(FXBOX_CALL* GetMark)(IAnimFilterSrcCallsThis* self, int* a, int* b);
  /* The chain is about to change, and has changed: the destination stops pulling meanwhile. */
  HRESULT(FXBOX_CALL* Lock)(IAnimFilterSrcCallsThis* self);
  HRESULT(FXBOX_CALL* Unlock)(IAnimFilterSrcCallsThis* self);
  /* Stores the source without calling it back. */
  HRESULT(FXBOX_CALL* AttachSource)(IAnimFilterSrcCallsThis* self, void* source);
  /* Asks the host at the tail to fill in the variables of a text, UTF-8 both ways. The answer
   * belongs to the caller, who frees it with CoTaskMemFree; a host that has none to give leaves
   * `expanded` alone. */
  HRESULT(FXBOX_CALL* ExpandText)(IAnimFilterSrcCallsThis* self, const char* text, char** expanded);
  /* Asks the host for the scale at which it prints. */
  HRESULT(FXBOX_CALL* QueryPrintScale)(IAnimFilterSrcCallsThis* self, double* scale);
  /* Numbers that only the host knows the meaning of. */
  HRESULT(FXBOX_CALL* HostCall3)(IAnimFilterSrcCallsThis* self, intptr_t a, intptr_t b, intptr_t c);
  HRESULT(FXBOX_CALL* HostCall1)(IAnimFilterSrcCallsThis* self, intptr_t a);
  HRESULT(FXBOX_CALL* HostCall1b)(IAnimFilterSrcCallsThis* self, intptr_t a);
} IAnimFilterSrcCallsThisVtbl;
struct IAnimFilterSrcCallsThis {
  const IAnimFilterSrcCallsThisVtbl* lpVtbl;
};

/* What the destination calls on the filter. */
static const GUID IID_IAnimFilterDestCallsThis = {0x4D415C7B, 0x8861, 0x4493, {0x9F, 0xE9, 0x75, 0x82, 0x11, 0x92, 0x45, 0x08}};
typedef struct IAnimFilterDestCallsThisVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterDestCallsThis)
  /* Fills the rectangle of `width` by `height` pixels with the corner srcX, srcY of this filter's
   * output into rows that the caller owns: picture row srcY + i lands in colourRows[destY + i] from
   * byte 3 * destX on and in maskRows[destY + i] from byte destX on. 0 when complete; another value
   * when the pull stopped, and the rows are then incomplete. */
  HRESULT(FXBOX_CALL* ReadRows)(IAnimFilterDestCallsThis* self, int destX, int destY, int srcX, int srcY, int width, int height, uint8_t** colourRows, uint8_t** maskRows);
  /* Stops a pull at its next row, in every stage up to the source. Stays until it is called with
   * false. */
  HRESULT(FXBOX_CALL* SetAbort)(IAnimFilterDestCallsThis* self, bool abort);
  /* Commits pending parameters along the whole chain and tells sizes downstream. Sets *changed when
   * the picture differs from the one of *revision, and brings *revision up to date. */
  HRESULT(FXBOX_CALL* Prepare)(IAnimFilterDestCallsThis* self, bool* changed, int* revision, bool trackRevision);
  /* Prepares, then tells the output's size, offset and extent. */
  HRESULT(FXBOX_CALL* GetInfo)(IAnimFilterDestCallsThis* self, int* width, int* height, int* offsetX, int* offsetY, int* extentWidth, int* extentHeight);
  /* Stores the destination without calling it back. */
  HRESULT(FXBOX_CALL* AttachDestination)(IAnimFilterDestCallsThis* self, void* destination);
  /* Takes one pixel (blue, green, red, mask: 4 bytes) through source and filter. */
  HRESULT(FXBOX_CALL* ReadPixel)(IAnimFilterDestCallsThis* self, uint8_t* pixel);
  /* A message record on its way to the source. */
  HRESULT(FXBOX_CALL* SendToSource)(IAnimFilterDestCallsThis* self, intptr_t message);
} IAnimFilterDestCallsThisVtbl;
struct IAnimFilterDestCallsThis {
  const IAnimFilterDestCallsThisVtbl* lpVtbl;
};

static const GUID IID_IAnimFilterParameter = {0x663A199C, 0x2C80, 0x4070, {0x8D, 0x31, 0xB2, 0x4C, 0x5F, 0x3E, 0x73, 0x05}};
typedef struct IAnimFilterParameterVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterParameter)
  /* Reads a parameter text into the pending fields; items that it lacks leave theirs alone. */
  HRESULT(FXBOX_CALL* SetParameter)(IAnimFilterParameter* self, const char* text, int flag);
  /* Print the pending fields, and those that a pull works with. A buffer that is too small stays
   * unwritten, and the answer is 0 all the same. */
  HRESULT(FXBOX_CALL* GetParameter)(IAnimFilterParameter* self, char* buffer, int size);
  HRESULT(FXBOX_CALL* GetActiveParameter)(IAnimFilterParameter* self, char* buffer, int size);
  /* Any text that a host wants to keep with the filter. E_FAIL when the key is absent or the value
   * is not shorter than `size`. */
  HRESULT(FXBOX_CALL* SetNamedValue)(IAnimFilterParameter* self, const char* key, const char* value);
  HRESULT(FXBOX_CALL* GetNamedValue)(IAnimFilterParameter* self, const char* key, char* buffer, int size);
} IAnimFilterParameterVtbl;
struct IAnimFilterParameter {
  const IAnimFilterParameterVtbl* lpVtbl;
};

/* An ordered run of filters between a source and a destination. One thread at a time. A host's
 * filter that throws out of a changing operation has its exception passed on after the chain is
 * unlocked. */
static const GUID IID_IAnimFilterChain = {0xD3B7A9C4, 0x3E52, 0x4F0A, {0xB6, 0xD1, 0x90, 0xA5, 0xC7, 0xE8, 0x1F, 0x24}};
typedef struct IAnimFilterChainVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterChain)
  /* The ends, which are linked to the outer filters, or to each other where there are none; null
   * takes an end away. A filter of the chain itself is refused with E_INVALIDARG. */
  HRESULT(FXBOX_CALL* SetSource)(IAnimFilterChain* self, void* source);
  HRESULT(FXBOX_CALL* SetDestination)(IAnimFilterChain* self, void* destination);
  /* The number of filters, both ends not counted. */
  HRESULT(FXBOX_CALL* GetCount)(IAnimFilterChain* self, int* count);
  /* The filter at a place, from the source's side on; a negative index gives the last one. E_FAIL
   * and a null result when there is no such filter. */
  HRESULT(FXBOX_CALL* GetAt)(IAnimFilterChain* self, int index, const GUID* iid, void** result);
  /* The first filter of this name. 1, and *result untouched, when there is none. */
  HRESULT(FXBOX_CALL* FindByName)(IAnimFilterChain* self, const char* name, const GUID* iid, void** result);
  /* Places by GetOrder, behind filters of the same rank. */
  HRESULT(FXBOX_CALL* Insert)(IAnimFilterChain* self, void* filter);
  /* Places ahead of the filter that has this index, whatever the ranks; at the end where there is
   * none. E_FAIL for null. */
  HRESULT(FXBOX_CALL* InsertAt)(IAnimFilterChain* self, int index, void* filter);
  HRESULT(FXBOX_CALL* RemoveAll)(IAnimFilterChain* self);
  /* E_FAIL when there is no such filter. */
  HRESULT(FXBOX_CALL* RemoveAt)(IAnimFilterChain* self, int index);
  /* Removes all filters of a name; none is no failure. The first form locks the chain meanwhile,
   * the second leaves that to the caller. */
  HRESULT(FXBOX_CALL* RemoveByNameLocked)(IAnimFilterChain* self, const char* name);
  HRESULT(FXBOX_CALL* RemoveByName)(IAnimFilterChain* self, const char* name);
  /* Locks and unlocks. */
  HRESULT(FXBOX_CALL* TouchChain)(IAnimFilterChain* self, intptr_t a, intptr_t b);
  /* Name, `open`, parameters, `close` of each filter in turn. E_FAIL, and nothing written, when the
   * text is not shorter than `size`. `active` prints what the pulls work with. */
  HRESULT(FXBOX_CALL* GetChainText)(IAnimFilterChain* self, char* buffer, int size, const char* open, const char* close, bool active);
  /* Turns the chain into the one that the text describes, with as few changes as possible. What the
   * creator does not know is left out. The first form locks, the second does not. */
  HRESULT(FXBOX_CALL* SetChainTextLocked)(IAnimFilterChain* self, const char* text, const char* open, const char* close, IAnimFilterCreator* creator);
  HRESULT(FXBOX_CALL* SetChainText)(IAnimFilterChain* self, const char* text, const char* open, const char* close, IAnimFilterCreator* creator);
  /* Sets parameters by filter name and inserts what is missing; the rest stays. 1 when an item
   * failed. */
  HRESULT(FXBOX_CALL* UpdateChain)(IAnimFilterChain* self, const char* text, const char* open, const char* close, IAnimFilterCreator* creator);
  /* The argument itself as a status. */
  HRESULT(FXBOX_CALL* CheckArgument)(IAnimFilterChain* self, intptr_t argument);
} IAnimFilterChainVtbl;
struct IAnimFilterChain {
  const IAnimFilterChainVtbl* lpVtbl;
};

/* Knows which filters exist and makes them by ProgID. One thread at a time. */
static const GUID IID_IAnimFilterCreator = {0xA95D1F7E, 0x6B0C, 0x4D43, {0x8A, 0x2E, 0x5F, 0x9C, 0x3E, 0x7D, 0x1B, 0x68}};
typedef struct IAnimFilterCreatorVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterCreator)
  /* By the exact versioned ProgID; E_FAIL for an unknown one. */
  HRESULT(FXBOX_CALL* CreateFilter)(IAnimFilterCreator* self, const char* progId, const GUID* iid, void** result);
  /* The dialog of a filter class, given `host` for its first operation. */
  HRESULT(FXBOX_CALL* CreateFilterDialog)(IAnimFilterCreator* self, const char* progId, intptr_t host, const GUID* iid, void** result);
  /* How many classes there are; both operations below take an index under it. */
  HRESULT(FXBOX_CALL* GetFilterCount)(IAnimFilterCreator* self, int* count);
  /* By position in the sorted list; E_FAIL out of range. */
  HRESULT(FXBOX_CALL* CreateFilterAt)(IAnimFilterCreator* self, int index, const GUID* iid, void** result);
  /* A new, empty chain. */
  HRESULT(FXBOX_CALL* CreateChain)(IAnimFilterCreator* self, const GUID* iid, void** result);
  /* The ProgID, when it is shorter than `size` (nothing is written otherwise), and the rank. */
  HRESULT(FXBOX_CALL* GetFilterInfo)(IAnimFilterCreator* self, int index, char* name, int size, int* order);
} IAnimFilterCreatorVtbl;
struct IAnimFilterCreator {
  const IAnimFilterCreatorVtbl* lpVtbl;
};

/* An object that a host takes into its page. */
static const GUID IID_IAnimLinkable = {0x5B0E1C36, 0x7A5D, 0x4C1E, {0x9D, 0x0C, 0x2C, 0x8F, 0x6A, 0x8B, 0x41, 0xE7}};
typedef struct IAnimLinkableVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimLinkable)
  /* *status, when given, becomes 0, or -1 when the host lacks a required interface. */
  HRESULT(FXBOX_CALL* Link)(IAnimLinkable* self, void* host, int* status);
  HRESULT(FXBOX_CALL* Unlink)(IAnimLinkable* self);
} IAnimLinkableVtbl;
struct IAnimLinkable {
  const IAnimLinkableVtbl* lpVtbl;
};

/* What a host's page may offer to show the pictures of icons. IAnimLinkable::Link asks the page for
 * it and calls it on the same thread; a page without it goes without pictures. */
static const GUID IID_IAnimIconPage = {0x0E5B2D94, 0x7C41, 0x4F7B, {0x8E, 0x0A, 0x3B, 0x9B, 0x61, 0xD0, 0xC2, 0xA7}};
typedef struct IAnimIconPageVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimIconPage)
  /* Packed bitmaps of the same size, which belong to the caller and live as long as the call:
   * `colour` of 24 bits, `mask` of 8, in which 0 is opaque and 255 shows the ground. `name` is that
   * of the icon, with "_foc" behind it for the picture that is shown while the icon has the focus. */
  HRESULT(FXBOX_CALL* SetIconPicture)(IAnimIconPage* self, const char* name, const void* colour, uint32_t colourBytes, const void* mask, uint32_t maskBytes);
} IAnimIconPageVtbl;
struct IAnimIconPage {
  const IAnimIconPageVtbl* lpVtbl;
};

static const GUID IID_IAnimFilterIcon = {0xC2A4A3B1, 0x0F0E, 0x4E1B, {0x8D, 0x8B, 0x6C, 0x5B, 0x0C, 0x9C, 0x7E, 0x52}};
typedef struct IAnimFilterIconVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterIcon)
  HRESULT(FXBOX_CALL* IconCall1)(IAnimFilterIcon* self, intptr_t a, intptr_t b);
  HRESULT(FXBOX_CALL* GetLabel)(IAnimFilterIcon* self, char* buffer, int size);
  HRESULT(FXBOX_CALL* GetLongLabel)(IAnimFilterIcon* self, char* buffer, int size);
  HRESULT(FXBOX_CALL* IconCall4)(IAnimFilterIcon* self);
  /* Knows "Name" and "IsActive". */
  HRESULT(FXBOX_CALL* GetAttribute)(IAnimFilterIcon* self, const char* name, char* buffer, int size);
  /* The display name, when it is shorter than `size`. */
  HRESULT(FXBOX_CALL* GetDisplayName)(IAnimFilterIcon* self, char* buffer, int size);
  /* Construct a string in `result`, which the caller destroys, and return it. Written in this form
   * a slot that returns a string is the same for every compiler. */
  void*(FXBOX_CALL* GetIconName)(IAnimFilterIcon* self, void* result);
  void*(FXBOX_CALL* GetNameKey)(IAnimFilterIcon* self, void* result);
  bool(FXBOX_CALL* IsDefaultActive)(IAnimFilterIcon* self);
} IAnimFilterIconVtbl;
struct IAnimFilterIcon {
  const IAnimFilterIconVtbl* lpVtbl;
};

/* Edits the parameter text of the filters that are attached through the connection point. All
 * operations come on the thread of the user interface. */
static const GUID IID_IAnimFilterDialog = {0x0E5B7D0A, 0x54B6, 0x4B59, {0x8F, 0x5E, 0x2B, 0x1B, 0x6C, 0x1D, 0x9A, 0x41}};
typedef struct IAnimFilterDialogVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimFilterDialog)
  /* The ProgID of the class. E_FAIL, and nothing written, when it is not shorter than `size`. */
  HRESULT(FXBOX_CALL* GetName)(IAnimFilterDialog* self, char* buffer, int size);
  /* Hands `a` on to the host's registry. E_FAIL without one. */
  HRESULT(FXBOX_CALL* HostForward)(IAnimFilterDialog* self, intptr_t a);
  /* Hand their arguments on to the class. No class here looks at them: S_OK. */
  HRESULT(FXBOX_CALL* ClassForward1)(IAnimFilterDialog* self, intptr_t a, intptr_t b);
  HRESULT(FXBOX_CALL* ClassForward2)(IAnimFilterDialog* self, intptr_t a, intptr_t b);
  HRESULT(FXBOX_CALL* ClassForward3)(IAnimFilterDialog* self, intptr_t a, intptr_t b);
  HRESULT(FXBOX_CALL* ClassForward4)(IAnimFilterDialog* self, intptr_t a, intptr_t b);
  /* A page opens the dialog: makes the window, hidden, above the window `c` where that is the
   * handle of one, shows the filters' text in it and registers with the host. `a` and `b` are not
   * looked at. S_FALSE where no window could be made; the dialog works all the same. Each Open
   * wants a Close; from the first to the last the dialog keeps itself alive. */
  HRESULT(FXBOX_CALL* Open)(IAnimFilterDialog* self, intptr_t a, intptr_t b, intptr_t c);
  HRESULT(FXBOX_CALL* Close)(IAnimFilterDialog* self);
  /* Shows and activates the window. */
  HRESULT(FXBOX_CALL* Show)(IAnimFilterDialog* self);
  /* The next change is to be announced to the host. */
  HRESULT(FXBOX_CALL* SetFirstChange)(IAnimFilterDialog* self);
  HRESULT(FXBOX_CALL* ClearFirstChange)(IAnimFilterDialog* self);
  /* Not 0: the window goes on top when it opens and does not show what the filters hold. */
  HRESULT(FXBOX_CALL* SetModeValue)(IAnimFilterDialog* self, intptr_t value);
  /* 1, and null, without a window. */
  HRESULT(FXBOX_CALL* GetWindowHandle)(IAnimFilterDialog* self, void** result);
} IAnimFilterDialogVtbl;
struct IAnimFilterDialog {
  const IAnimFilterDialogVtbl* lpVtbl;
};

/* What a host calls by name. */
static const GUID IID_IAnimRunnable = {0x7D3C2F18, 0x0B0E, 0x4E57, {0x9C, 0x43, 0x5A, 0x86, 0xD2, 0xF1, 0xB7, 0xC4}};
typedef struct IAnimRunnableVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimRunnable)
  HRESULT(FXBOX_CALL* RunCall1)(IAnimRunnable* self);
  /* Hands `a` on to the class. */
  HRESULT(FXBOX_CALL* RunCall2)(IAnimRunnable* self, intptr_t a);
  HRESULT(FXBOX_CALL* RunCall3)(IAnimRunnable* self);
  HRESULT(FXBOX_CALL* RunCall4)(IAnimRunnable* self);
  /* Hands `a` on to the class. */
  HRESULT(FXBOX_CALL* RunCall5)(IAnimRunnable* self, intptr_t a);
  /* The named calls. The arguments are numbers or pointers by the name; those that a name does not
   * use may be left out:
   *
   *   "TimerCallback" (text)            answers -1
   *   "Localize" (key, buffer, size)    the words for a key; nothing where they do not fit
   *   "GetContexthelp" (text or null)
   *   "bu_lock"                         the lock button was used
   *   "CheckDragDrop"                   answers -2
   *   "ButtonTop"                       gives all filters what the window shows
   *   "ButtonTopCopyEnabled" (int*)     whether that would change something; also in the answer
   *   "ButtonTopDelete"                 removes the filter from the host's chains
   *   "ButtonTopDrag"                   drags the filter out of the dialog
   *   "LockUnlocked" (int*)             1 while the lock button is up; also in the answer
   *   "GenerateBubbleHelpText", "ShowBubbleHelpText", "HideBubbleHelpText" (any)
   *   "ButtonClose"
   *   "ColorPicker" (text)              see core::kMessageColorPicker
   *
   * Any other name goes to the class. S_OK where nothing else is said; E_POINTER for a null name. */
  HRESULT(FXBOX_CALL* Dispatch)(IAnimRunnable* self, const char* name, intptr_t a, intptr_t b, intptr_t c);
} IAnimRunnableVtbl;
struct IAnimRunnable {
  const IAnimRunnableVtbl* lpVtbl;
};

static const GUID IID_IAnimMessageReceiver = {0xB86F9D54, 0x1E7A, 0x4A0C, {0x8B, 0x6D, 0x3F, 0x0E, 0x9C, 0x7A, 0x2D, 0x15}};
typedef struct IAnimMessageReceiverVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimMessageReceiver)
  HRESULT(FXBOX_CALL* OnHostMessage)(IAnimMessageReceiver* self, const AnimMessage* record);
} IAnimMessageReceiverVtbl;
struct IAnimMessageReceiver {
  const IAnimMessageReceiverVtbl* lpVtbl;
};

/* Knows which dialogs are open. Required. */
static const GUID IID_IAnimHostRegistry = {0x3287659F, 0x6510, 0x4CA9, {0x8E, 0x82, 0xC4, 0x3B, 0x1B, 0x85, 0x5B, 0x2A}};
typedef struct IAnimHostRegistryVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimHostRegistry)
  HRESULT(FXBOX_CALL* HostOperation3)(IAnimHostRegistry* self);
  HRESULT(FXBOX_CALL* HostOperation4)(IAnimHostRegistry* self);
  HRESULT(FXBOX_CALL* HostOperation5)(IAnimHostRegistry* self);
  HRESULT(FXBOX_CALL* HostOperation6)(IAnimHostRegistry* self);
  /* 7, 8: a dialog is there under this id, reached through its IAnimRunnable; and is gone. */
  HRESULT(FXBOX_CALL* RegisterDialog)(IAnimHostRegistry* self, const char* instanceId, void* runnable);
  HRESULT(FXBOX_CALL* UnregisterDialog)(IAnimHostRegistry* self, const char* instanceId);
  /* 9: the dialog is to be seen. */
  HRESULT(FXBOX_CALL* ShowDialog)(IAnimHostRegistry* self, const char* instanceId);
  HRESULT(FXBOX_CALL* HostOperation10)(IAnimHostRegistry* self);
  /* 11: what IAnimFilterDialog::HostForward is called with. */
  HRESULT(FXBOX_CALL* Forward)(IAnimHostRegistry* self, intptr_t a);
} IAnimHostRegistryVtbl;
struct IAnimHostRegistry {
  const IAnimHostRegistryVtbl* lpVtbl;
};

/* Not asked for anything; a host may lack it. */
static const GUID IID_IAnimHostOptional = {0x719FA30C, 0x3BEB, 0x47D9, {0x87, 0x71, 0x89, 0x3D, 0x20, 0xCC, 0xFE, 0x01}};
typedef struct IAnimHostOptionalVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimHostOptional)
} IAnimHostOptionalVtbl;
struct IAnimHostOptional {
  const IAnimHostOptionalVtbl* lpVtbl;
};

/* The page that shows the dialog. Required. */
static const GUID IID_IAnimHostPage = {0xF8510991, 0x2AC9, 0x4D86, {0x92, 0x1D, 0xB6, 0xB8, 0x48, 0xFC, 0x52, 0xCB}};
typedef struct IAnimHostPageVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimHostPage)
  HRESULT(FXBOX_CALL* HostOperation3)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation4)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation5)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation6)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation7)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation8)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation9)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation10)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation11)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation12)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation13)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation14)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation15)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation16)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation17)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation18)(IAnimHostPage* self);
  /* 19: the state of a button of the page, "ButtonTop" or "ButtonLock". */
  HRESULT(FXBOX_CALL* SetButtonState)(IAnimHostPage* self, const char* button, int state);
  HRESULT(FXBOX_CALL* HostOperation20)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation21)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation22)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation23)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation24)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation25)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation26)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation27)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation28)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation29)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation30)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation31)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation32)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation33)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation34)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation35)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation36)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation37)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation38)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation39)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation40)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation41)(IAnimHostPage* self);
  HRESULT(FXBOX_CALL* HostOperation42)(IAnimHostPage* self);
  /* 43: assigns the words for a key, in the system's code page, to a string that is there. A host
   * that has no KvString does it with FxboxSetString. Empty where it has no words. */
  HRESULT(FXBOX_CALL* Localize)(IAnimHostPage* self, const char* key, void* words);
} IAnimHostPageVtbl;
struct IAnimHostPage {
  const IAnimHostPageVtbl* lpVtbl;
};

/* Posts messages to pages and receives theirs. Required. */
static const GUID IID_IAnimHostMessages = {0xC7F1AC4B, 0xC573, 0x4C9B, {0x8C, 0xA4, 0xCD, 0x0A, 0xBE, 0x4C, 0x8C, 0x83}};
typedef struct IAnimHostMessagesVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimHostMessages)
  HRESULT(FXBOX_CALL* HostOperation3)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation4)(IAnimHostMessages* self);
  /* 5: `a` and `b` are numbers or pointers by the message; *result, which is 0 before, is the
   * page's answer. */
  HRESULT(FXBOX_CALL* Post)(IAnimHostMessages* self, int page, int message, intptr_t a, intptr_t b, intptr_t* result);
  HRESULT(FXBOX_CALL* HostOperation6)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation7)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation8)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation9)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation10)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation11)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation12)(IAnimHostMessages* self);
  HRESULT(FXBOX_CALL* HostOperation13)(IAnimHostMessages* self);
  /* 14, 15: looks up a page by its name, and lets go of it. *page is 0 when there is none. */
  HRESULT(FXBOX_CALL* FindPage)(IAnimHostMessages* self, const char* name, int* page);
  HRESULT(FXBOX_CALL* ReleasePage)(IAnimHostMessages* self, int page);
  /* 16: the IAnimMessageReceiver that gets the page's messages from now on; null for nobody. */
  HRESULT(FXBOX_CALL* SetReceiver)(IAnimHostMessages* self, int page, void* receiver);
} IAnimHostMessagesVtbl;
struct IAnimHostMessages {
  const IAnimHostMessagesVtbl* lpVtbl;
};

/* An interface of ours that a host's registry may have beside the other: it then carries the drags
 * that begin in a dialog. Without it the window system does. */
static const GUID IID_IAnimHostDrag = {0xC9B5C0E2, 0x4D57, 0x4D0A, {0x9A, 0x6C, 0x6E, 0x0E, 0x7B, 0x1B, 0x8E, 0x35}};
typedef struct IAnimHostDragVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimHostDrag)
  /* As DoDragDrop: waits for the end and answers DRAGDROP_S_DROP or DRAGDROP_S_CANCEL. */
  HRESULT(FXBOX_CALL* Drag)(IAnimHostDrag* self, void* object, void* source, uint32_t allowed, uint32_t* effect);
} IAnimHostDragVtbl;
struct IAnimHostDrag {
  const IAnimHostDragVtbl* lpVtbl;
};

/* The optional fifth interface of a filter. A chain in which all filters have it and answer 0 can
 * be pulled band by band, so that neither the host nor the source needs room for the whole picture.
 * A filter without it, such as one of another module, is pulled whole. */
static const GUID IID_IAnimRowReach = {0xA74997EB, 0xD681, 0x43D3, {0xA1, 0xFD, 0x9B, 0x6A, 0x8E, 0x4B, 0xD5, 0x72}};
typedef struct IAnimRowReachVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimRowReach)
  /* How many rows above and below a row of the result must be asked for with it, as far as the
   * picture has them, so that it has the same bytes as in a pull of all rows. Of what the last
   * Prepare has made active. Holds for pulls into row 0 and column 0 of the caller's rows that are
   * as wide as the one pull would be.
   *
   * 0 with a number from 0 up; 1, and no number, when the result depends on the rectangle that is
   * asked for, so that only one pull will do. *readsAll is set when the filter asks its source for
   * all of its picture at once and keeps it, whatever is asked for; otherwise it asks for the rows
   * that it is asked for, moved where its picture has another size. */
  HRESULT(FXBOX_CALL* GetRowReach)(IAnimRowReach* self, int* rows, bool* readsAll);
} IAnimRowReachVtbl;
struct IAnimRowReach {
  const IAnimRowReachVtbl* lpVtbl;
};

/* The optional second interface of a source, be it a host's or a filter. A filter that is asked for
 * the whole picture, or must see it, asks for this by QueryInterface at each pull, and reads what
 * it is lent; from a source without it, or one that does not lend, it has it copied with ReadRows. */
static const GUID IID_IAnimRowLender = {0xECC3AF36, 0x5BB3, 0x4988, {0x8B, 0x9D, 0x87, 0xB8, 0x61, 0x5C, 0x3B, 0x93}};
typedef struct IAnimRowLenderVtbl {
  FXBOX_UNKNOWN_SLOTS(IAnimRowLender)
  /* Lends what ReadRows would deliver for the rectangle (0, 0, width, height): *colourRows and
   * *maskRows become arrays of `height` pointers to rows of `width` pixels or more, in the order
   * and layout of ReadRows. Nobody writes to them. Several may point to one row: a picture without
   * transparent places can lend one mask row of zeros for all.
   *
   * 0: arrays and rows stay there, unchanged, until ReturnRows, and count as delivered. 1: the
   * source does not lend now, as the rows are not in its memory or it has been told to stop; it is
   * asked with ReadRows instead, and so it is after a failure.
   *
   * Called on the thread that pulls, as ReadRows is. Several threads may then read the rows. */
  HRESULT(FXBOX_CALL* LendRows)(IAnimRowLender* self, int width, int height, const uint8_t* const** colourRows, const uint8_t* const** maskRows);
  /* The rows are given back: once for each LendRows that answered 0, on the same thread, before the
   * pull ends that they were lent for. Until then it asks this source for no other rows. */
  HRESULT(FXBOX_CALL* ReturnRows)(IAnimRowLender* self);
} IAnimRowLenderVtbl;
struct IAnimRowLender {
  const IAnimRowLenderVtbl* lpVtbl;
};
/* clang-format on */
/* --- end of the interfaces */
#endif
#endif
