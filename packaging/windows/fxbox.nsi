; The installer for Windows: makensis -DVERSION=... -DFILES=FOLDER -DOUT=FILE fxbox.nsi
;
; For one user without rights, or for all: /CurrentUser, /AllUsers; /S asks nothing. It registers the
; component server in the same way, and its uninstaller takes back all of it.
Target amd64-unicode
Unicode true
SetCompressor /SOLID lzma
Name "Fxbox ${VERSION}"
OutFile "${OUT}"
BrandingText "The Fxbox developers"

!define PRODUCT "Fxbox"
!define CHAIN_CLASS "Fxbox.Chain.4"
!define CHAINS "Software\Classes\${CHAIN_CLASS}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PRODUCT}"
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "${PRODUCT}"
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_DEFAULT_CURRENTUSER
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "Software\${PRODUCT}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallMode"
!include MultiUser.nsh
!include MUI2.nsh
!include LogicLib.nsh
!include x64.nsh

!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_LICENSE "${FILES}\LICENSE.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "German"

; Runs the registration tool on the module: "" or "/u " for the machine, with the switches of the
; module's own for the user.
!macro Register undo
  ${If} $MultiUser.InstallMode == "AllUsers"
    ExecWait '"$SYSDIR\regsvr32.exe" /s ${undo}"$INSTDIR\Fxbox4.dll"' $0
  ${Else}
    ExecWait '"$SYSDIR\regsvr32.exe" /s ${undo}/n /i:user "$INSTDIR\Fxbox4.dll"' $0
  ${EndIf}
!macroend

Function .onInit
  SetRegView 64
  ; A folder that /D= names, which the choice of the mode would forget.
  StrCpy $R9 $INSTDIR
  !insertmacro MULTIUSER_INIT
  ${If} $R9 != ""
    StrCpy $INSTDIR $R9
  ${EndIf}
FunctionEnd

Function un.onInit
  SetRegView 64
  !insertmacro MULTIUSER_UNINIT
FunctionEnd

Section
  SetRegView 64
  SetOutPath "$INSTDIR"
  File /r "${FILES}\*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  !insertmacro Register ""
  ${If} $0 <> 0
    DetailPrint "The component server could not be registered ($0)."
    SetErrorLevel 2
  ${EndIf}
  ; Chain files are the desk's where they are nobody's yet; it is among the choices otherwise.
  WriteRegStr SHCTX "${CHAINS}" "" "Chain of picture filters"
  WriteRegStr SHCTX "${CHAINS}\DefaultIcon" "" "$INSTDIR\fxbox.exe,0"
  WriteRegStr SHCTX "${CHAINS}\shell\open\command" "" '"$INSTDIR\fxbox-desk.exe" "%1"'
  WriteRegStr SHCTX "Software\Classes\.chain\OpenWithProgids" "${CHAIN_CLASS}" ""
  ReadRegStr $0 SHCTX "Software\Classes\.chain" ""
  ${If} $0 == ""
    WriteRegStr SHCTX "Software\Classes\.chain" "" "${CHAIN_CLASS}"
  ${EndIf}
  CreateShortcut "$SMPROGRAMS\Fxbox Desk.lnk" "$INSTDIR\fxbox-desk.exe"
  WriteRegStr SHCTX "Software\${PRODUCT}" "InstallMode" "$MultiUser.InstallMode"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "Fxbox picture filters"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "The Fxbox developers <fxbox@example.org>"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section Uninstall
  SetRegView 64
  !insertmacro Register "/u "
  ; What was put there, and folders that are empty then: the user may keep files of his own here.
  !include "${FILES}.remove.nsh"
  Delete "$SMPROGRAMS\Fxbox Desk.lnk"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey SHCTX "${CHAINS}"
  DeleteRegValue SHCTX "Software\Classes\.chain\OpenWithProgids" "${CHAIN_CLASS}"
  DeleteRegKey /ifempty SHCTX "Software\Classes\.chain\OpenWithProgids"
  ReadRegStr $0 SHCTX "Software\Classes\.chain" ""
  ${If} $0 == "${CHAIN_CLASS}"
    DeleteRegValue SHCTX "Software\Classes\.chain" ""
    DeleteRegKey /ifempty SHCTX "Software\Classes\.chain"
  ${EndIf}
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
  DeleteRegKey SHCTX "Software\${PRODUCT}"
SectionEnd
