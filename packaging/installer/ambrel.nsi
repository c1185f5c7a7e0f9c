; The installer: for one user, without elevation. packaging/installer.py compiles it and defines VERSION,
; VERSION_NUMBERS, PUBLISHER, HOMEPAGE, SUPPORT, PROGRAM_FILE, ICON_FILE, WIZARD_FILE and OUTPUT.
;
;   /S            silent: no page, no question; exit code 0, or 2 when nothing was installed
;   /AUTOSTART    launch Ambrel at startup
;   /RUN          silent: start Ambrel afterwards (a copy that was running is started again without it)
;   /D=FOLDER     where to; the last switch, without quotes even when it holds blanks
;
; The uninstaller takes /S, which keeps the settings.

Unicode true
Target amd64-unicode
SetDateSave off
; Solid compression would unpack everything into a temporary file first.
SetCompressor lzma
RequestExecutionLevel user
ManifestSupportedOS Win10
ManifestDPIAware true
AllowSkipFiles off

!define PROGRAM "ambrel.exe"
!define UNINSTALLER "uninstall.exe"
!define UNPACKED ".new"
!define SUGGESTED_PARENT "$LOCALAPPDATA\Programs"
!define SETTINGS_FOLDER "$APPDATA\Ambrel2"
!define SHORTCUT "$SMPROGRAMS\Ambrel.lnk"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Ambrel"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define RUN_VALUE "Ambrel2"
; Where the Startup page of the Task Manager notes that it switched a Run entry off.
!define STARTUP_APPROVED_KEY "Software\Microsoft\Windows\CurrentVersion\Explorer\StartupApproved\Run"
!define SETUP_MUTEX "Ambrel2Setup"
!define ERROR_ALREADY_EXISTS 183
!define EXIT_FAILED 2
!define MOVEFILE_REPLACE_EXISTING 1
; A virus scanner may hold a new file for a moment.
!define REPLACE_TRIES 50
!define REPLACE_PAUSE_MS 100

Name "Ambrel"
Caption "Ambrel ${VERSION} Setup"
UninstallCaption "Remove Ambrel"
BrandingText " "
OutFile "${OUTPUT}"
InstallDir "${SUGGESTED_PARENT}\Ambrel"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"

VIProductVersion "${VERSION_NUMBERS}"
VIFileVersion "${VERSION_NUMBERS}"
VIAddVersionKey "ProductName" "Ambrel"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Ambrel Setup"
VIAddVersionKey "CompanyName" "${PUBLISHER}"

!include LogicLib.nsh
!include FileFunc.nsh
!include WinMessages.nsh
!include WinVer.nsh
!include MUI2.nsh
!include running_copy.nsh

Var PreviousFolder  ; where Ambrel is installed already, "" on a first install
Var MadeFolder      ; 1 when this run makes the folder
Var MadeParent      ; 1 when this run may make SUGGESTED_PARENT
Var AutoStart
Var StartProgram

!define MUI_ICON "${ICON_FILE}"
!define MUI_UNICON "${ICON_FILE}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${WIZARD_FILE}"

!define MUI_WELCOMEPAGE_TITLE "Ambrel ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "Ambrel makes the screen warmer and dimmer for the night.$\r$\n$\r$\nIt is installed for you alone, without administrator rights. If Ambrel is installed already, this version replaces it and your settings are kept.$\r$\n$\r$\nIf Ambrel is running, it is closed first, which turns the filter off."
!insertmacro MUI_PAGE_WELCOME

!define MUI_PAGE_HEADER_TEXT "Folder"
!define MUI_PAGE_HEADER_SUBTEXT "Where Ambrel is installed."
!define MUI_DIRECTORYPAGE_TEXT_TOP "The suggested folder is yours alone. Choose another one if you like."
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipFolderOnUpgrade
!insertmacro MUI_PAGE_DIRECTORY

!define MUI_INSTFILESPAGE_FINISHHEADER_TEXT "Installed"
!define MUI_INSTFILESPAGE_FINISHHEADER_SUBTEXT "Ambrel ${VERSION} is installed."
!define MUI_INSTFILESPAGE_ABORTHEADER_TEXT "Not installed"
!define MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT "Nothing was changed."
!insertmacro MUI_PAGE_INSTFILES

; The finish page performs its first check box before its second one: the Run entry must be there when the program
; starts, which reads it.
!define MUI_FINISHPAGE_TITLE "Ambrel ${VERSION} is installed"
!define MUI_FINISHPAGE_TEXT "Its icon appears in the notification area, at the right end of the taskbar. Windows may hide it behind the arrow there at first."
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Launch Ambrel at startup"
!define MUI_FINISHPAGE_RUN_NOTCHECKED
!define MUI_FINISHPAGE_RUN_FUNCTION WriteRunEntry
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Start Ambrel now"
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION StartInstalledProgram
!define MUI_FINISHPAGE_NOREBOOTSUPPORT
!define MUI_PAGE_CUSTOMFUNCTION_SHOW FitFinishPage
!insertmacro MUI_PAGE_FINISH

!define MUI_PAGE_HEADER_TEXT "Remove Ambrel"
!define MUI_PAGE_HEADER_SUBTEXT "The screen, the pointer and the backlight are restored."
!define MUI_UNCONFIRMPAGE_TEXT_TOP "Ambrel is closed and removed from this folder. You are asked before your settings are removed."
!insertmacro MUI_UNPAGE_CONFIRM
!define MUI_INSTFILESPAGE_FINISHHEADER_TEXT "Removed"
!define MUI_INSTFILESPAGE_FINISHHEADER_SUBTEXT "Ambrel is no longer on this computer."
; The header file undefines the other texts after each page.
!undef MUI_INSTFILESPAGE_ABORTHEADER_TEXT
!undef MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT
!define MUI_INSTFILESPAGE_ABORTHEADER_TEXT "Not removed"
!define MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT "Nothing was removed."
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

!insertmacro RunningCopyFunctions ""
!insertmacro RunningCopyFunctions "un."

; Installing

Function .onInit
    ${IfNot} ${AtLeastWin10}
        MessageBox MB_OK|MB_ICONSTOP "Ambrel needs Windows 10 or 11." /SD IDOK
        SetErrorLevel ${EXIT_FAILED}
        Quit
    ${EndIf}
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "${SETUP_MUTEX}") p .r0 ?e'
    Pop $0
    ${If} $0 = ${ERROR_ALREADY_EXISTS}
        MessageBox MB_OK|MB_ICONEXCLAMATION "Ambrel's setup is running already." /SD IDOK
        SetErrorLevel ${EXIT_FAILED}
        Quit
    ${EndIf}

    StrCpy $CopyEnded 0
    StrCpy $MadeFolder 0
    StrCpy $MadeParent 0
    ReadRegStr $PreviousFolder HKCU "${UNINSTALL_KEY}" "InstallLocation"
    ${IfNot} ${FileExists} "$PreviousFolder\${PROGRAM}"
        StrCpy $PreviousFolder ""
    ${EndIf}

    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/AUTOSTART" $1
    StrCpy $AutoStart 1
    ${If} ${Errors}
        StrCpy $AutoStart 0
    ${EndIf}
    ClearErrors
    ${GetOptions} $0 "/RUN" $1
    StrCpy $StartProgram 1
    ${If} ${Errors}
    ${OrIfNot} ${Silent}
        StrCpy $StartProgram 0
    ${EndIf}
FunctionEnd

Function SkipFolderOnUpgrade
    ${If} $PreviousFolder != ""
        Abort
    ${EndIf}
FunctionEnd

; Removes what was unpacked and starts an ended copy again: the version from before works as it did.
Function UndoInstall
    SetDetailsPrint none
    Delete "$INSTDIR\${PROGRAM}${UNPACKED}"
    Delete "$INSTDIR\${UNINSTALLER}${UNPACKED}"
    ${If} $CopyEnded = 1
        StrCpy $CopyEnded 0
        ${If} ${FileExists} "$CopyPath"
            Exec '"$CopyPath"'
        ${EndIf}
    ${EndIf}
    SetOutPath "$TEMP"
    ${If} $MadeFolder = 1
        RMDir "$INSTDIR"
    ${EndIf}
    ${If} $MadeParent = 1
        RMDir "${SUGGESTED_PARENT}"
    ${EndIf}
    SetDetailsPrint lastused
FunctionEnd

!macro Fail text
    Call UndoInstall
    SetErrorLevel ${EXIT_FAILED}
    MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
    Abort "${text}"
!macroend
!define Fail "!insertmacro Fail"

; Gives the unpacked file $0 of the folder its name in one step. $1 = 1 when it worked.
Function PutInPlace
    StrCpy $2 0
    ${Do}
        System::Call 'kernel32::MoveFileExW(w "$INSTDIR\$0${UNPACKED}", w "$INSTDIR\$0", i ${MOVEFILE_REPLACE_EXISTING}) i .r1'
        ${If} $1 <> 0
            StrCpy $1 1
            Return
        ${EndIf}
        IntOp $2 $2 + 1
        Sleep ${REPLACE_PAUSE_MS}
    ${LoopUntil} $2 >= ${REPLACE_TRIES}
FunctionEnd

; As the program itself writes it: the plain path.
Function WriteRunEntry
    WriteRegStr HKCU "${RUN_KEY}" "${RUN_VALUE}" "$INSTDIR\${PROGRAM}"
FunctionEnd

Function StartInstalledProgram
    Exec '"$INSTDIR\${PROGRAM}"'
FunctionEnd

; What has been done already is shown as done, not offered.
Function FitFinishPage
    ReadRegStr $0 HKCU "${RUN_KEY}" "${RUN_VALUE}"
    ${If} $0 == "$INSTDIR\${PROGRAM}"
        SendMessage $mui.FinishPage.Run ${BM_SETCHECK} ${BST_CHECKED} 0
        EnableWindow $mui.FinishPage.Run 0
    ${EndIf}
    ${If} $CopyEnded = 1
        ShowWindow $mui.FinishPage.ShowReadme ${SW_HIDE}
        SendMessage $mui.FinishPage.ShowReadme ${BM_SETCHECK} ${BST_UNCHECKED} 0
    ${EndIf}
FunctionEnd

; $0 = the size of both files in KiB.
Function MeasureFiles
    StrCpy $0 0
    ClearErrors
    FileOpen $1 "$INSTDIR\${PROGRAM}" r
    FileSeek $1 0 END $2
    FileClose $1
    FileOpen $1 "$INSTDIR\${UNINSTALLER}" r
    FileSeek $1 0 END $3
    FileClose $1
    IntOp $0 $2 + $3
    IntOp $0 $0 / 1024
FunctionEnd

Function RegisterUninstaller
    Call MeasureFiles
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Ambrel"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "URLInfoAbout" "${HOMEPAGE}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "HelpLink" "${SUPPORT}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
FunctionEnd

; After an install into another folder than before: the old files go, and a Run entry follows.
Function LeavePreviousFolder
    ${If} $PreviousFolder == ""
    ${OrIf} $PreviousFolder == $INSTDIR
        Return
    ${EndIf}
    Delete "$PreviousFolder\${PROGRAM}"
    Delete "$PreviousFolder\${UNINSTALLER}"
    RMDir "$PreviousFolder"
    ReadRegStr $0 HKCU "${RUN_KEY}" "${RUN_VALUE}"
    ${If} $0 == "$PreviousFolder\${PROGRAM}"
        Call WriteRunEntry
    ${EndIf}
FunctionEnd

Section "Ambrel"
    ${IfNot} ${FileExists} "$INSTDIR\*.*"
        StrCpy $MadeFolder 1
    ${EndIf}
    ${IfNot} ${FileExists} "${SUGGESTED_PARENT}\*.*"
        StrCpy $MadeParent 1
    ${EndIf}
    ClearErrors
    SetOutPath "$INSTDIR"
    ${If} ${Errors}
        ${Fail} "The folder $INSTDIR cannot be used."
    ${EndIf}

    ; Everything that may fail for want of space comes before the running copy is ended.
    WriteUninstaller "$INSTDIR\${UNINSTALLER}${UNPACKED}"
    ${If} ${Errors}
        ${Fail} "No files can be written into $INSTDIR."
    ${EndIf}
    File "/oname=${PROGRAM}${UNPACKED}" "${PROGRAM_FILE}"

    Call EndRunningCopy
    ${If} $R0 = 0
        ${Fail} "Ambrel is still running. Nothing was changed."
    ${EndIf}

    StrCpy $0 "${UNINSTALLER}"
    Call PutInPlace
    ${If} $1 = 1
        StrCpy $0 "${PROGRAM}"
        Call PutInPlace
    ${EndIf}
    ${If} $1 <> 1
        ${Fail} "$INSTDIR\$0 cannot be replaced. Nothing was changed."
    ${EndIf}

    CreateShortcut "${SHORTCUT}" "$INSTDIR\${PROGRAM}"
    Call RegisterUninstaller
    Call LeavePreviousFolder
    ${If} $AutoStart = 1
        Call WriteRunEntry
    ${EndIf}
    ${If} $CopyEnded = 1
    ${OrIf} $StartProgram = 1
        Call StartInstalledProgram
    ${EndIf}
SectionEnd

Function .onInstFailed
    Call UndoInstall
    SetErrorLevel ${EXIT_FAILED}
FunctionEnd

; Removing

; Deletes the Run value when it names a file of this folder, and with it what the Task Manager noted about it.
Function un.DeleteRunEntry
    ReadRegStr $0 HKCU "${RUN_KEY}" "${RUN_VALUE}"
    StrCpy $1 $0 1
    ${If} $1 == '"'
        StrCpy $0 $0 "" 1
    ${EndIf}
    StrLen $1 "$INSTDIR\"
    StrCpy $0 $0 $1
    ${If} $0 == "$INSTDIR\"
        DeleteRegValue HKCU "${RUN_KEY}" "${RUN_VALUE}"
        DeleteRegValue HKCU "${STARTUP_APPROVED_KEY}" "${RUN_VALUE}"
    ${EndIf}
FunctionEnd

Function un.RemoveOrKeepSettings
    ${IfNot} ${FileExists} "${SETTINGS_FOLDER}\*.*"
        Return
    ${EndIf}
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Remove your settings and the event log too?$\r$\n$\r$\n${SETTINGS_FOLDER}" /SD IDNO IDYES remove
    ; A later install must not launch at startup before it is asked to.
    ${If} ${FileExists} "${SETTINGS_FOLDER}\settings.ini"
        WriteINIStr "${SETTINGS_FOLDER}\settings.ini" "Settings" "LaunchAtStart" "0"
    ${EndIf}
    Return
    remove:
    Delete "${SETTINGS_FOLDER}\settings.ini"
    Delete "${SETTINGS_FOLDER}\events.log"
    RMDir "${SETTINGS_FOLDER}"
FunctionEnd

Section "un.Ambrel"
    ; Only a copy that runs from this folder is ended.
    Call un.IsProgramLocked
    ${If} $R0 = 1
        Call un.EndRunningCopy
        ${If} $R0 = 0
            SetErrorLevel ${EXIT_FAILED}
            Abort "Ambrel is still running. Nothing was removed."
        ${EndIf}
    ${EndIf}
    ClearErrors
    Delete "$INSTDIR\${PROGRAM}"
    ${If} ${Errors}
        SetErrorLevel ${EXIT_FAILED}
        MessageBox MB_OK|MB_ICONSTOP "$INSTDIR\${PROGRAM} cannot be deleted. Nothing was removed." /SD IDOK
        Abort "$INSTDIR\${PROGRAM} cannot be deleted. Nothing was removed."
    ${EndIf}
    Delete "$INSTDIR\${PROGRAM}${UNPACKED}"
    Delete "$INSTDIR\${UNINSTALLER}${UNPACKED}"
    Call un.DeleteRunEntry
    ; An Ambrel that was installed elsewhere since keeps its menu and its place in the list of apps.
    ReadRegStr $0 HKCU "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $0 == $INSTDIR
        Delete "${SHORTCUT}"
        DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ${EndIf}
    Call un.RemoveOrKeepSettings
    Delete "$INSTDIR\${UNINSTALLER}"
    SetOutPath "$TEMP"
    RMDir "$INSTDIR"
    ${GetParent} "$INSTDIR" $0
    ${If} $0 == "${SUGGESTED_PARENT}"
        RMDir "${SUGGESTED_PARENT}"
    ${EndIf}
SectionEnd
