; A copy of the program that runs while the installer or the uninstaller needs its file.

!define WINDOW_CLASS "Ambrel2Class"
!define WINDOW_TITLE "Ambrel"
!define INSTANCE_MUTEX "Global\Ambrel2SingleInstance"

; The program restores the displays' brightness before it ends. A slow display takes up to 25 s.
!define END_TIMEOUT_MS 30000
; How long a copy without a window may take to open one or to end: WINDOW_POLLS * WINDOW_POLL_MS.
!define WINDOW_POLL_MS 100
!define WINDOW_POLLS 100

!define ENDSESSION_CLOSEAPP 1
!define SYNCHRONIZE 0x100000
!define PROCESS_QUERY_LIMITED_INFORMATION 0x1000
!define GENERIC_WRITE 0x40000000
!define SHARE_ALL 7
!define OPEN_EXISTING 3
!define INVALID_HANDLE_VALUE -1
!define ERROR_SHARING_VIOLATION 32
!define WAIT_OBJECT_0 0

Var CopyEnded  ; 1 once a running copy was ended
Var CopyPath   ; the program file of the running copy, "" if unknown
Var CopyProcess

!macro RunningCopyFunctions un

; $R0 = 1 if the installed program's file cannot be opened for writing because it is running.
Function ${un}IsProgramLocked
    StrCpy $R0 0
    System::Call 'kernel32::CreateFileW(w "$INSTDIR\${PROGRAM}", i ${GENERIC_WRITE}, i ${SHARE_ALL}, p 0, i ${OPEN_EXISTING}, i 0, p 0) p .R1 ?e'
    Pop $R2
    ${If} $R1 P<> ${INVALID_HANDLE_VALUE}
        System::Call 'kernel32::CloseHandle(p R1)'
    ${ElseIf} $R2 = ${ERROR_SHARING_VIOLATION}
        StrCpy $R0 1
    ${EndIf}
FunctionEnd

; $R0 = 1 if a copy of this user holds the single-instance mutex. Another user's mutex cannot be opened and does not
; count: that copy runs from another file.
Function ${un}IsInstanceMutexHeld
    StrCpy $R0 0
    System::Call 'kernel32::OpenMutexW(i ${SYNCHRONIZE}, i 0, w "${INSTANCE_MUTEX}") p .R1'
    ${If} $R1 P<> 0
        System::Call 'kernel32::CloseHandle(p R1)'
        StrCpy $R0 1
    ${EndIf}
FunctionEnd

; Waits for the program's window. $R0 = the window, or 0 if no copy runs or none opened a window in time.
Function ${un}FindCopyWindow
    StrCpy $R3 0
    ${Do}
        FindWindow $R4 "${WINDOW_CLASS}" "${WINDOW_TITLE}"
        ${If} $R4 P<> 0
            ${ExitDo}
        ${EndIf}
        ; A copy that is starting has no window yet, and one that is ending no longer has one.
        Call ${un}IsInstanceMutexHeld
        ${If} $R0 = 0
            Call ${un}IsProgramLocked
        ${EndIf}
        ${If} $R0 = 0
            ${ExitDo}
        ${EndIf}
        ${If} $R3 = 0
            DetailPrint "Waiting for Ambrel..."
        ${EndIf}
        IntOp $R3 $R3 + 1
        Sleep ${WINDOW_POLL_MS}
    ${LoopUntil} $R3 > ${WINDOW_POLLS}
    StrCpy $R0 $R4
FunctionEnd

; Ends the copy that owns the window $R0 and waits for its process. $R0 = 1 once it has ended.
Function ${un}EndCopyOfWindow
    StrCpy $R4 $R0
    StrCpy $R0 0
    StrCpy $CopyPath ""
    System::Call 'user32::GetWindowThreadProcessId(p R4, *i .s)'
    Pop $CopyProcess
    System::Call 'kernel32::OpenProcess(i ${SYNCHRONIZE}|${PROCESS_QUERY_LIMITED_INFORMATION}, i 0, i $CopyProcess) p .R5'
    ${If} $R5 P= 0
        Return
    ${EndIf}
    System::Call 'kernel32::QueryFullProcessImageNameW(p R5, i 0, w .s, *i ${NSIS_MAX_STRLEN})'
    Pop $CopyPath
    DetailPrint "Asking Ambrel to quit..."
    ClearErrors
    SendMessage $R4 ${WM_QUERYENDSESSION} 0 ${ENDSESSION_CLOSEAPP} $R6 /TIMEOUT=${END_TIMEOUT_MS}
    ${IfNot} ${Errors}
    ${AndIf} $R6 <> 0
        SendMessage $R4 ${WM_ENDSESSION} 1 ${ENDSESSION_CLOSEAPP} /TIMEOUT=${END_TIMEOUT_MS}
        ; The file is locked until the process has ended, which is later than the end of the window.
        System::Call 'kernel32::WaitForSingleObject(p R5, i ${END_TIMEOUT_MS}) i .R6'
        ${If} $R6 = ${WAIT_OBJECT_0}
            StrCpy $R0 1
        ${EndIf}
    ${EndIf}
    System::Call 'kernel32::CloseHandle(p R5)'
FunctionEnd

; Ends a running copy of the program. $R0 = 1 once no copy is in the way, 0 if it refuses and the user cancels. A
; silent run cancels immediately.
Function ${un}EndRunningCopy
    ${Do}
        StrCpy $CopyPath ""
        StrCpy $CopyProcess ""
        Call ${un}FindCopyWindow
        ${If} $R0 P<> 0
            Call ${un}EndCopyOfWindow
            ${If} $R0 = 1
                StrCpy $CopyEnded 1
                Return
            ${EndIf}
        ${Else}
            Call ${un}IsProgramLocked
            ${If} $R0 = 0
                StrCpy $R0 1
                Return
            ${EndIf}
        ${EndIf}
        ${If} $CopyPath == ""
            StrCpy $CopyPath "$INSTDIR\${PROGRAM}"
        ${EndIf}
        ${If} $CopyProcess != ""
            StrCpy $CopyPath "$CopyPath (process $CopyProcess)"
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Ambrel is running and cannot be closed from here:$\r$\n$CopyPath$\r$\n$\r$\nIt may be running as administrator, or one of its message boxes may be open. Close the box, choose Quit from the menu of its tray icon, and then choose Retry." /SD IDCANCEL IDRETRY again
        StrCpy $R0 0
        Return
        again:
    ${Loop}
FunctionEnd

!macroend
