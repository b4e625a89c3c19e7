#!/bin/sh
# Runs a Windows program while the DLL is registered by the system's own tool:
#   registered.sh RUNNER DLL PROGRAM
# Then the same tool registers for the user alone, where the keys are looked at.
set -eu
runner="$1" dll="$2" program="$3"

"$runner" regsvr32 /s "$dll"
status=0
"$runner" "$program" || status=$?
"$runner" regsvr32 /u /s "$dll"
[ $status -eq 0 ] || exit $status

userClass='HKCU\Software\Classes\CLSID\{0FE71124-90E5-4CE7-BFD0-857F0E22ABC8}'
"$runner" regsvr32 /n /i:user /s "$dll"
"$runner" reg query "$userClass\\InProcServer32" | grep -qi 'Fxbox4\.dll' || status=1
"$runner" reg query "$userClass\\Implemented Categories" | grep -qi '50988255-CF5D' || status=2
"$runner" regsvr32 /u /n /i:user /s "$dll"
[ $status -eq 0 ] || echo "registration for the user: the keys are not right ($status)" >&2
exit $status
