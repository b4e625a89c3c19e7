// Stand-in for the system header of the same name: status codes.
#pragma once

#include <cstdint>

using HRESULT = std::int32_t;
using SCODE = std::int32_t;

constexpr bool SUCCEEDED(HRESULT status) {
  return status >= 0;
}
constexpr bool FAILED(HRESULT status) {
  return status < 0;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT DATA_S_SAMEFORMATETC = 0x00040130;
inline constexpr HRESULT DRAGDROP_S_DROP = 0x00040100;
inline constexpr HRESULT DRAGDROP_S_CANCEL = 0x00040101;
inline constexpr HRESULT DRAGDROP_S_USEDEFAULTCURSORS = 0x00040102;
inline constexpr HRESULT OLE_E_ADVISENOTSUPPORTED = static_cast<HRESULT>(0x80040003u);
inline constexpr HRESULT OLE_E_NOCONNECTION = static_cast<HRESULT>(0x80040004u);
inline constexpr HRESULT DV_E_FORMATETC = static_cast<HRESULT>(0x80040064u);
inline constexpr HRESULT DV_E_LINDEX = static_cast<HRESULT>(0x80040068u);
inline constexpr HRESULT DV_E_TYMED = static_cast<HRESULT>(0x80040069u);
inline constexpr HRESULT DV_E_DVASPECT = static_cast<HRESULT>(0x8004006Bu);
inline constexpr HRESULT CONNECT_E_NOCONNECTION = static_cast<HRESULT>(0x80040200u);
inline constexpr HRESULT CONNECT_E_ADVISELIMIT = static_cast<HRESULT>(0x80040201u);
inline constexpr HRESULT CONNECT_E_CANNOTCONNECT = static_cast<HRESULT>(0x80040202u);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111u);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154u);
inline constexpr HRESULT CAT_E_CATIDNOEXIST = static_cast<HRESULT>(0x80040160u);
inline constexpr HRESULT CAT_E_NODESCRIPTION = static_cast<HRESULT>(0x80040161u);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3u);
inline constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8u);
inline constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9u);
inline constexpr HRESULT SELFREG_E_CLASS = static_cast<HRESULT>(0x80040201u);

inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001u);
inline constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002u);
inline constexpr HRESULT STG_E_PATHNOTFOUND = static_cast<HRESULT>(0x80030003u);
inline constexpr HRESULT STG_E_TOOMANYOPENFILES = static_cast<HRESULT>(0x80030004u);
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005u);
inline constexpr HRESULT STG_E_INVALIDHANDLE = static_cast<HRESULT>(0x80030006u);
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = static_cast<HRESULT>(0x80030008u);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009u);
inline constexpr HRESULT STG_E_NOMOREFILES = static_cast<HRESULT>(0x80030012u);
inline constexpr HRESULT STG_E_SEEKERROR = static_cast<HRESULT>(0x80030019u);
inline constexpr HRESULT STG_E_WRITEFAULT = static_cast<HRESULT>(0x8003001Du);
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001Eu);
inline constexpr HRESULT STG_E_SHAREVIOLATION = static_cast<HRESULT>(0x80030020u);
inline constexpr HRESULT STG_E_LOCKVIOLATION = static_cast<HRESULT>(0x80030021u);
inline constexpr HRESULT STG_E_FILEALREADYEXISTS = static_cast<HRESULT>(0x80030050u);
inline constexpr HRESULT STG_E_INVALIDPARAMETER = static_cast<HRESULT>(0x80030057u);
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070u);
inline constexpr HRESULT STG_E_INVALIDHEADER = static_cast<HRESULT>(0x800300FBu);
inline constexpr HRESULT STG_E_INVALIDNAME = static_cast<HRESULT>(0x800300FCu);
inline constexpr HRESULT STG_E_UNKNOWN = static_cast<HRESULT>(0x800300FDu);
inline constexpr HRESULT STG_E_UNIMPLEMENTEDFUNCTION = static_cast<HRESULT>(0x800300FEu);
inline constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FFu);
inline constexpr HRESULT STG_E_INUSE = static_cast<HRESULT>(0x80030100u);
inline constexpr HRESULT STG_E_NOTCURRENT = static_cast<HRESULT>(0x80030101u);
inline constexpr HRESULT STG_E_REVERTED = static_cast<HRESULT>(0x80030102u);
inline constexpr HRESULT STG_E_CANTSAVE = static_cast<HRESULT>(0x80030103u);
inline constexpr HRESULT STG_E_OLDFORMAT = static_cast<HRESULT>(0x80030104u);
inline constexpr HRESULT STG_E_DOCFILECORRUPT = static_cast<HRESULT>(0x80030109u);
inline constexpr HRESULT STG_E_DOCFILETOOLARGE = static_cast<HRESULT>(0x80030111u);
