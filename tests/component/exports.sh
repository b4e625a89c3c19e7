#!/bin/sh
# Demands that a shared library exports what hosts need and nothing that is not ours:
#   exports.sh LIBRARY
set -eu
exported="$(nm -D --defined-only "$1" | awk '{print $3}')"
status=0

for name in DllGetClassObject DllCanUnloadNow DllRegisterServer DllUnregisterServer \
  FxboxCreateCreator FxboxFilterClasses FxboxPumpEvents FxboxSetString FxboxSetWorkers \
  DibCreate DibCreateEx DibFree DibOpenFile DibOpenFromModule \
  DibReadDib DibScale DibSetUsage DibMapToPalette DIBPaint DIBDrawWithMask DIBFileSize Make24BitDib \
  GolorGray ConvertMaskArrayToDib ConvertMaskDibToArray \
  CoCreateInstance CoGetClassObject ProgIDFromCLSID; do
  echo "$exported" | grep -qx "$name" || { echo "not exported: $name" >&2; status=1; }
done

# C functions by their beginning; C++ ones by what they belong to.
strangers="$(echo "$exported" | grep -Ev '^(Dll|Fxbox|Co|Ole|ProgID|CLSID|StringFrom)[A-Za-z0-9]*$' |
  c++filt | sed -E 's/^(vtable for|typeinfo for|typeinfo name for|VTT for|(non-virtual|virtual) thunk to) //' |
  grep -E '^(std::|__gnu|_|[a-z]+_|FXBOX)' || true)"
if [ -n "$strangers" ]; then
  echo "exported, but not ours:" >&2
  echo "$strangers" | head -20 >&2
  status=1
fi
exit $status
