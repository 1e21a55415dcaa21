; The installer of the updater for one machine. The programs lie in a folder of their own; an update
; replaces the product's copies in the product's folder, never these. Neither installing nor removing
; touches the product, its settings, its database or backups.
;   makensis -DVERSION=3.12.1 -DNUMBERS=3.12.0.1 -DSTAGE=FOLDER -DOUTPUT=FILE [-DWIN64] installer.nsi
;   silently: FILE /S [/D=FOLDER]; uninstall.exe /S
Unicode true
!ifdef WIN64
  Target amd64-unicode
  !define PROGRAMS $PROGRAMFILES64
  !define VIEW 64
!else
  Target x86-unicode
  !define PROGRAMS $PROGRAMFILES32
  !define VIEW 32
!endif
!include MUI2.nsh

!define TITLE "Web-обновление Tamrin"
!define MAKER "Kestrel Soft"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\TamrinUpdate"

Name "${TITLE}"
OutFile "${OUTPUT}"
InstallDir "${PROGRAMS}\${MAKER}\Tamrin Update"
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true
SetCompressor /SOLID lzma
SetDateSave off
CRCCheck force
BrandingText "${MAKER}"
VIProductVersion "${NUMBERS}"
VIFileVersion "${NUMBERS}"
VIAddVersionKey /LANG=1049 CompanyName "${MAKER}"
VIAddVersionKey /LANG=1049 FileDescription "Установка: ${TITLE}"
VIAddVersionKey /LANG=1049 FileVersion "${VERSION}"
VIAddVersionKey /LANG=1049 LegalCopyright "© 2026 The TmWebUpdate authors"
VIAddVersionKey /LANG=1049 ProductName "Tamrin"
VIAddVersionKey /LANG=1049 ProductVersion "${VERSION}"
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "Russian"

; Ends with code 2 while the updater runs: its files could not be replaced or removed.
!macro RefuseWhileRunning
  System::Call 'kernel32::OpenMutexW(i 0x100000, i 0, w "Local\TMW_WebUpdate_Mutex") p .r0'
  ${If} $0 P<> 0
    System::Call 'kernel32::CloseHandle(p r0)'
    MessageBox MB_OK|MB_ICONSTOP "Идет обновление программы Tamrin. Дождитесь его окончания и повторите." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
!macroend

Var installed ; the folder of an installed version

Function .onInit
  SetRegView ${VIEW}
  SetShellVarContext all
  !insertmacro RefuseWhileRunning
  ; An installed version is replaced where it lies.
  ReadRegStr $installed HKLM "${ENTRY}" InstallLocation
  ${If} $INSTDIR == "${PROGRAMS}\${MAKER}\Tamrin Update"
  ${AndIf} $installed != ""
    StrCpy $INSTDIR $installed
  ${EndIf}
FunctionEnd

Function un.onInit
  SetRegView ${VIEW}
  SetShellVarContext all
  !insertmacro RefuseWhileRunning
FunctionEnd

Section
  ; Removed first, so that no file of another version stays.
  ${If} $installed != ""
  ${AndIf} ${FileExists} "$installed\uninstall.exe"
    ExecWait '"$installed\uninstall.exe" /S _?=$installed'
  ${EndIf}
  SetOutPath "$INSTDIR\docs"
  File /r "${STAGE}/docs/*"
  SetOutPath "$INSTDIR"
  ClearErrors
  File "${STAGE}/*.exe" "${STAGE}/*.dll" "${STAGE}/LICENSE" "${STAGE}/CHANGELOG.md"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    SetErrorLevel 2
    Abort "Не удалось записать файлы в папку $INSTDIR."
  ${EndIf}
  CreateDirectory "$SMPROGRAMS\${MAKER}"
  CreateShortcut "$SMPROGRAMS\${MAKER}\${TITLE}.lnk" "$INSTDIR\TmWebUpdate.exe"
  CreateShortcut "$SMPROGRAMS\${MAKER}\Сведения для поддержки Tamrin.lnk" "$INSTDIR\TmSupport.exe"
  CreateShortcut "$SMPROGRAMS\${MAKER}\Возврат к предыдущей версии Tamrin.lnk" "$INSTDIR\TmRollback.exe"
  WriteRegStr HKLM "${ENTRY}" DisplayName "${TITLE}"
  WriteRegStr HKLM "${ENTRY}" DisplayVersion "${VERSION}"
  WriteRegStr HKLM "${ENTRY}" DisplayIcon "$INSTDIR\TmWebUpdate.exe"
  WriteRegStr HKLM "${ENTRY}" Publisher "${MAKER}"
  WriteRegStr HKLM "${ENTRY}" InstallLocation "$INSTDIR"
  WriteRegStr HKLM "${ENTRY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${ENTRY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${ENTRY}" EstimatedSize ${SIZE}
  WriteRegDWORD HKLM "${ENTRY}" NoModify 1
  WriteRegDWORD HKLM "${ENTRY}" NoRepair 1
SectionEnd

; By name, and folders only when they are empty: what else lies there belongs to somebody.
Section Uninstall
  SetOutPath "$TEMP"
  !include "${REMOVALS}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  RMDir "${PROGRAMS}\${MAKER}"
  Delete "$SMPROGRAMS\${MAKER}\${TITLE}.lnk"
  Delete "$SMPROGRAMS\${MAKER}\Сведения для поддержки Tamrin.lnk"
  Delete "$SMPROGRAMS\${MAKER}\Возврат к предыдущей версии Tamrin.lnk"
  RMDir "$SMPROGRAMS\${MAKER}"
  DeleteRegKey HKLM "${ENTRY}"
SectionEnd
