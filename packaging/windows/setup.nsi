; The setup for Windows: programs for the whole machine, and the practice's program folder inside the imaging suite's.
; Silently: setup.exe /S [/SUITE=FOLDER] [/D=FOLDER], without quotes around the last one.
; VERSION, STAGE (the folder with everything to install), FILES (a list made from it) and OUTPUT are given to the compiler.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
RequestExecutionLevel admin

!include MUI2.nsh
!include x64.nsh
!include FileFunc.nsh
!include WordFunc.nsh
!include LogicLib.nsh
!include WinVer.nsh

!define LIBRARY "KVFILEDB.DLL"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Varnlog"
!define ENVIRONMENT "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"

Name "Varnlog"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Varnlog"
InstallDirRegKey HKLM "${UNINSTALL}" "InstallLocation"
BrandingText "Varnlog ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Varnlog"
VIAddVersionKey "FileDescription" "Varnlog"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" ""

Var Suite

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_LANGDLL_REGISTRY_ROOT HKLM
!define MUI_LANGDLL_REGISTRY_KEY "${UNINSTALL}"
!define MUI_LANGDLL_REGISTRY_VALUENAME "Installer Language"

!insertmacro MUI_PAGE_WELCOME
!define MUI_DIRECTORYPAGE_VARIABLE $Suite
!define MUI_PAGE_HEADER_TEXT "$(SuiteTitle)"
!define MUI_PAGE_HEADER_SUBTEXT ""
!define MUI_DIRECTORYPAGE_TEXT_TOP "$(SuiteText)"
!define MUI_DIRECTORYPAGE_TEXT_DESTINATION "$(SuiteFolder)"
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE AskAboutSuite
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION StartProgram
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "German"
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Spanish"
!insertmacro MUI_LANGUAGE "Italian"
!insertmacro MUI_LANGUAGE "French"
!insertmacro MUI_LANGUAGE "Dutch"
!insertmacro MUI_LANGUAGE "Russian"
!insertmacro MUI_RESERVEFILE_LANGDLL
!include "setup-texts.nsh"

; Looks for the suite's library in a folder's folders.
!macro LookIn FOLDER
  ${If} $Suite == ""
    FindFirst $0 $1 "${FOLDER}\*.*"
    ${DoWhile} $1 != ""
      ${If} $1 != "."
      ${AndIf} $1 != ".."
      ${AndIf} ${FileExists} "${FOLDER}\$1\${LIBRARY}"
        StrCpy $Suite "${FOLDER}\$1"
        ${ExitDo}
      ${EndIf}
      FindNext $0 $1
    ${Loop}
    FindClose $0
  ${EndIf}
!macroend

Function LookOnDrive
  ${If} ${FileExists} "$9${LIBRARY}"
    StrCpy $Suite $9
  ${EndIf}
  StrCpy $8 $9 2
  !insertmacro LookIn "$8"
  ${If} $Suite == ""
    Push "continue"
  ${Else}
    Push "StopGetDrives"
  ${EndIf}
FunctionEnd

; Where it was told at the last setup, where the caller says, where such programs usually are, on the disks.
Function FindSuite
  ${GetParameters} $R0
  ; Some callers put the whole option between quotation marks, which no name of a folder has.
  ${WordReplace} $R0 '"' "" "+" $R0
  ${GetOptions} $R0 "/SUITE=" $Suite
  ${If} $Suite != ""
    Return
  ${EndIf}
  ReadRegStr $0 HKLM "${ENVIRONMENT}" "VARNLOG_FOLDER"
  ${If} $0 != ""
    ${GetParent} $0 $Suite
    Return
  ${EndIf}
  !insertmacro LookIn "$PROGRAMFILES32"
  !insertmacro LookIn "$PROGRAMFILES64"
  ${If} $Suite == ""
    ${GetDrives} "HDD" LookOnDrive
  ${EndIf}
FunctionEnd

Function .onInit
  ${IfNot} ${AtLeastWin10}
    MessageBox MB_OK|MB_ICONSTOP "Windows 10 (64 bit) or later is needed." /SD IDOK
    SetErrorLevel 3
    Abort
  ${EndIf}
  SetShellVarContext all
  SetRegView 64
  !insertmacro MUI_LANGDLL_DISPLAY
  Call FindSuite
FunctionEnd

Function un.onInit
  SetShellVarContext all
  SetRegView 64
  !insertmacro MUI_UNGETLANGUAGE
FunctionEnd

Function AskAboutSuite
  ${If} ${FileExists} "$Suite\${LIBRARY}"
    Return
  ${EndIf}
  MessageBox MB_YESNO|MB_ICONEXCLAMATION|MB_DEFBUTTON2 "$(NoSuite)" /SD IDYES IDYES goOn
  Abort
goOn:
FunctionEnd

; A program that runs cannot be replaced, and half a replacement would not start.
!macro WaitForEnd UN
Function ${UN}WaitForEnd
again:
  IfFileExists "$INSTDIR\varnlog.exe" 0 ended
  ClearErrors
  FileOpen $0 "$INSTDIR\varnlog.exe" a
  IfErrors busy
  FileClose $0
  ClearErrors
  IfFileExists "$INSTDIR\varnlogctl.exe" 0 ended
  FileOpen $0 "$INSTDIR\varnlogctl.exe" a
  IfErrors busy
  FileClose $0
  ClearErrors
  IfFileExists "$INSTDIR\varnlogdocs.exe" 0 ended
  FileOpen $0 "$INSTDIR\varnlogdocs.exe" a
  IfErrors busy
  FileClose $0
  Goto ended
busy:
  MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(Running)" /SD IDCANCEL IDRETRY again
  SetErrorLevel 4
  Abort
ended:
FunctionEnd
!macroend
!insertmacro WaitForEnd ""
!insertmacro WaitForEnd "un."

Function StartProgram
  ; As the user who is logged on, not as the administrator who installs.
  Exec '"$WINDIR\explorer.exe" "$SMPROGRAMS\Varnlog.lnk"'
FunctionEnd

Section
  Call WaitForEnd
  ; An older version may have had files that this one lacks; its own list says which.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S /UPGRADE _?=$INSTDIR'
  ${EndIf}
  SetOutPath "$INSTDIR"
  File /r "${STAGE}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  ; What the practice changes stands in the suite's folder, no program beside it, so every user may write there.
  ${If} $Suite != ""
    CreateDirectory "$Suite\varnlog"
    nsExec::Exec 'icacls "$Suite\varnlog" /grant *S-1-5-32-545:(OI)(CI)M'
    Pop $0
    WriteRegStr HKLM "${ENVIRONMENT}" "VARNLOG_FOLDER" "$Suite\varnlog"
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
  ${EndIf}
  SetOutPath "$INSTDIR"
  ${If} $Suite != ""
    CreateShortcut "$SMPROGRAMS\Varnlog.lnk" "$INSTDIR\varnlog.exe" '--folder "$Suite\varnlog"'
  ${Else}
    CreateShortcut "$SMPROGRAMS\Varnlog.lnk" "$INSTDIR\varnlog.exe"
  ${EndIf}

  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "Varnlog"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayIcon" "$INSTDIR\varnlog.exe"
  WriteRegStr HKLM "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  IntFmt $0 "0x%08X" $0
  WriteRegDWORD HKLM "${UNINSTALL}" "EstimatedSize" "$0"
SectionEnd

; Only what the setup has brought goes: settings and logs stay where they are.
Section un.
  Call un.WaitForEnd
  !include "${FILES}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/UPGRADE" $R1
  ${If} ${Errors}
    Delete "$SMPROGRAMS\Varnlog.lnk"
    DeleteRegValue HKLM "${ENVIRONMENT}" "VARNLOG_FOLDER"
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
    DeleteRegKey HKLM "${UNINSTALL}"
  ${EndIf}
SectionEnd
