; The installer: for one user, without elevation. packaging/ambrel_packages/installer.py compiles it and defines
; VERSION, VERSION_NUMBERS, MINIMUM_BUILD, PUBLISHER, HOMEPAGE, SUPPORT, PROGRAM_FILE, ICON_FILE, WIZARD_FILE, OUTPUT.
;
;   /S            silent: no pages, no questions
;   /AUTOSTART    launch Ambrel at startup
;   /RUN          silent: start Ambrel afterwards (a copy that was running is restarted without this switch)
;   /D=FOLDER     the target folder as an absolute path; the last switch, without quotes even if it contains blanks
;
; Exit codes: 0 installed, 1 cancelled by the user, 2 failed. Unless the code is 0, nothing was installed.
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
; A user may choose a folder that contains another program's uninstall.exe.
!define UNINSTALLER "ambrel-uninstall.exe"
!define UNPACKED ".new"
!define SUGGESTED_PARENT "$LOCALAPPDATA\Programs"
!define SETTINGS_FOLDER "$APPDATA\Ambrel2"
!define SHORTCUT "$SMPROGRAMS\Ambrel.lnk"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Ambrel"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define RUN_VALUE "Ambrel2"
; The Startup page of Task Manager stores here that it disabled a Run entry.
!define STARTUP_APPROVED_KEY "Software\Microsoft\Windows\CurrentVersion\Explorer\StartupApproved\Run"
!define SETUP_MUTEX "Ambrel2Setup"
!define ERROR_ALREADY_EXISTS 183
!define EXIT_FAILED 2
!define MOVEFILE_REPLACE_EXISTING 1
; A virus scanner may keep a file open for a moment, and Windows one whose process has just ended.
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

Var PreviousFolder  ; where Ambrel is already installed, "" on a first install
Var MadeFolder      ; 1 if this run creates the folder
Var MadeParent      ; 1 if this run may create SUGGESTED_PARENT
Var AutoStart
Var StartProgram

!define MUI_ICON "${ICON_FILE}"
!define MUI_UNICON "${ICON_FILE}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${WIZARD_FILE}"

!define MUI_WELCOMEPAGE_TITLE "Ambrel ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "Ambrel makes the screen warmer and dimmer for the night.$\r$\n$\r$\nIt is installed for you alone, without administrator rights. If Ambrel is installed already, this version replaces it and your settings are kept.$\r$\n$\r$\nIf Ambrel is running, it is closed first, which turns the filter off."
!define MUI_PAGE_CUSTOMFUNCTION_SHOW NameWelcomeButton
!insertmacro MUI_PAGE_WELCOME

!define MUI_PAGE_HEADER_TEXT "Folder"
!define MUI_PAGE_HEADER_SUBTEXT "Where Ambrel is installed."
!define MUI_DIRECTORYPAGE_TEXT_TOP "The suggested folder is yours alone. You can choose another one."
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
; The header file undefines all other texts after each page.
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
    ${IfNot} ${AtLeastBuild} ${MINIMUM_BUILD}
        MessageBox MB_OK|MB_ICONSTOP "Ambrel needs Windows 11, or Windows 10 version 1607 or later." /SD IDOK
        SetErrorLevel ${EXIT_FAILED}
        Quit
    ${EndIf}
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "${SETUP_MUTEX}") p .r0 ?e'
    Pop $0
    ${If} $0 = ${ERROR_ALREADY_EXISTS}
        MessageBox MB_OK|MB_ICONEXCLAMATION "Ambrel Setup is already running." /SD IDOK
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

; An upgrade has no folder page: the button of its first page starts the installation.
Function NameWelcomeButton
    ${If} $PreviousFolder != ""
        GetDlgItem $0 $HWNDPARENT 1
        SendMessage $0 ${WM_SETTEXT} 0 "STR:$(^InstallBtn)"
    ${EndIf}
FunctionEnd

Function SkipFolderOnUpgrade
    ${If} $PreviousFolder != ""
        Abort
    ${EndIf}
FunctionEnd

; Removes the unpacked files and restarts a copy that was ended, so that the previous version works as before.
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

; Renames the unpacked file $0 of the folder to its final name in one step. $1 = 1 on success, else 0.
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

; The plain path, as the program itself writes it.
Function WriteRunEntry
    WriteRegStr HKCU "${RUN_KEY}" "${RUN_VALUE}" "$INSTDIR\${PROGRAM}"
FunctionEnd

Function StartInstalledProgram
    Exec '"$INSTDIR\${PROGRAM}"'
FunctionEnd

; Steps that are already done are not offered again.
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

; After an installation into another folder: deletes the old files and updates a Run entry that names them.
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
    ${If} $PreviousFolder != ""
        Delete "$PreviousFolder\${PROGRAM}${UNPACKED}"
    ${EndIf}
    ClearErrors
    SetOutPath "$INSTDIR"
    ${If} ${Errors}
        ${Fail} "The folder $INSTDIR cannot be used."
    ${EndIf}

    ; Every step that needs disk space precedes the end of the running copy.
    WriteUninstaller "$INSTDIR\${UNINSTALLER}${UNPACKED}"
    ${If} ${Errors}
        ${Fail} "Files cannot be written to $INSTDIR."
    ${EndIf}
    File "/oname=${PROGRAM}${UNPACKED}" "${PROGRAM_FILE}"
    ; One folder may have two spellings. The unpacked file then appears under both.
    ${If} $PreviousFolder != ""
    ${AndIf} ${FileExists} "$PreviousFolder\${PROGRAM}${UNPACKED}"
        StrCpy $PreviousFolder $INSTDIR
    ${EndIf}

    Call EndRunningCopy
    ${If} $R0 = 0
        ${Fail} "Ambrel is still running. Nothing was changed."
    ${EndIf}

    StrCpy $0 "${PROGRAM}"
    Call PutInPlace
    ${If} $1 = 0
        ${Fail} "$INSTDIR\${PROGRAM} cannot be replaced. Nothing was changed."
    ${EndIf}
    StrCpy $0 "${UNINSTALLER}"
    Call PutInPlace
    ; If it cannot be replaced, the previous version's uninstaller removes this version too.
    Delete "$INSTDIR\${UNINSTALLER}${UNPACKED}"

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

; Deletes the Run value if it names a file in this folder, and Task Manager's value about it.
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

; $1 = 1 once the program file is deleted, else 0.
Function un.DeleteProgram
    StrCpy $1 1
    StrCpy $2 0
    ${Do}
        ClearErrors
        Delete "$INSTDIR\${PROGRAM}"
        ${IfNot} ${Errors}
            Return
        ${EndIf}
        IntOp $2 $2 + 1
        Sleep ${REPLACE_PAUSE_MS}
    ${LoopUntil} $2 >= ${REPLACE_TRIES}
    StrCpy $1 0
FunctionEnd

Function un.RemoveOrKeepSettings
    ${IfNot} ${FileExists} "${SETTINGS_FOLDER}\*.*"
        Return
    ${EndIf}
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Remove your settings and the event log too?$\r$\n$\r$\n${SETTINGS_FOLDER}" /SD IDNO IDYES remove
    ; A later installation must not launch at startup until the user asks for it.
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
    Call un.DeleteProgram
    ${If} $1 = 0
        ${If} $CopyEnded = 1
            Exec '"$CopyPath"'
        ${EndIf}
        SetErrorLevel ${EXIT_FAILED}
        MessageBox MB_OK|MB_ICONSTOP "$INSTDIR\${PROGRAM} cannot be deleted. Nothing was removed." /SD IDOK
        Abort "$INSTDIR\${PROGRAM} cannot be deleted. Nothing was removed."
    ${EndIf}
    Delete "$INSTDIR\${PROGRAM}${UNPACKED}"
    Delete "$INSTDIR\${UNINSTALLER}${UNPACKED}"
    Call un.DeleteRunEntry
    ; If Ambrel has since been installed elsewhere, its Start menu entry and its entry in the list of apps stay.
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
