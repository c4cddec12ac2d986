; SPDX-License-Identifier: GPL-3.0-or-later
; The installer: for one user, without administrator rights.
;
; makensis -DVERSION=... -DTREE=<what is installed> -DINSTALLER=<file to write> glymark.nsi

Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true
ManifestSupportedOS all

!include LogicLib.nsh
!include MUI2.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Glymark"
!define OWN_KEY "Software\Glymark"

Name "Glymark"
OutFile "${INSTALLER}"
InstallDir "$LOCALAPPDATA\Programs\Glymark"
InstallDirRegKey HKCU "${OWN_KEY}" "Program"
BrandingText "Glymark ${VERSION}"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION startProgram
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

; A Windows in any other language gets the first one.
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Czech"

LangString SAMPLES ${LANG_ENGLISH} "Samples"
LangString SAMPLES ${LANG_CZECH} "Ukázky"
LangString GUIDE ${LANG_ENGLISH} "User guide"
LangString GUIDE ${LANG_CZECH} "Příručka (anglicky)"
LangString REMOVE ${LANG_ENGLISH} "Remove Glymark"
LangString REMOVE ${LANG_CZECH} "Odebrat Glymark"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=${LANG_ENGLISH} "ProductName" "Glymark"
VIAddVersionKey /LANG=${LANG_ENGLISH} "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_ENGLISH} "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_ENGLISH} "FileDescription" "Installer of Glymark"
VIAddVersionKey /LANG=${LANG_ENGLISH} "LegalCopyright" "The Glymark founders"

; The user's folder: settings, the Czech texts, and what is saved without another choice.
Var folder

Function startProgram
    ExecShell "" "$SMPROGRAMS\Glymark\Glymark.lnk"
FunctionEnd

; Whether the Czech texts in the user's folder are those that an installer put there, unchanged: they
; have the time that was noted then. Leaves 1 or 0 on the stack.
!macro hasOwnTexts
    Push 0
    ClearErrors
    GetFileTime "$folder\czech_cs.qm" $0 $1
    ReadRegStr $2 HKCU "${OWN_KEY}" "Texts"
    ${IfNot} ${Errors}
    ${AndIf} $2 == "$0 $1"
        Pop $0
        Push 1
    ${EndIf}
!macroend

; With this file in its folder the window is Czech. The user's own file stays as it is.
Function settleCzechTexts
    !insertmacro hasOwnTexts
    Pop $3
    ${If} $3 = 1
        Delete "$folder\czech_cs.qm"
        DeleteRegValue HKCU "${OWN_KEY}" "Texts"
    ${EndIf}
    ${If} $LANGUAGE = ${LANG_CZECH}
    ${AndIfNot} ${FileExists} "$folder\czech_cs.qm"
        SetOutPath "$folder"
        File "${TREE}\czech\czech_cs.qm"
        GetFileTime "$folder\czech_cs.qm" $0 $1
        WriteRegStr HKCU "${OWN_KEY}" "Texts" "$0 $1"
    ${EndIf}
FunctionEnd

Function installFiles
    SetOutPath "$INSTDIR"
    File "${TREE}\glymark.exe"
    File "${TREE}\copyright.txt"
    File "${TREE}\CITATION.cff"
    SetOutPath "$INSTDIR\licences"
    File "${TREE}\licences\*"
    SetOutPath "$INSTDIR\samples"
    File "${TREE}\samples\*.xlsx"
    SetOutPath "$INSTDIR\guide"
    File "${TREE}\guide\guide.html"
    SetOutPath "$INSTDIR\guide\images"
    File "${TREE}\guide\images\*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
FunctionEnd

; In both languages, because an earlier installation may have had the other.
!macro removeShortcuts
    RMDir /r "$SMPROGRAMS\Glymark"
    Delete "$folder\Samples.lnk"
    Delete "$folder\Ukázky.lnk"
!macroend

Function addShortcuts
    !insertmacro removeShortcuts
    CreateDirectory "$SMPROGRAMS\Glymark"
    ; A shortcut starts in the folder that is set here.
    SetOutPath "$folder"
    CreateShortcut "$SMPROGRAMS\Glymark\Glymark.lnk" "$INSTDIR\glymark.exe"
    CreateShortcut "$folder\$(SAMPLES).lnk" "$INSTDIR\samples"
    CreateShortcut "$SMPROGRAMS\Glymark\$(SAMPLES).lnk" "$INSTDIR\samples"
    CreateShortcut "$SMPROGRAMS\Glymark\$(GUIDE).lnk" "$INSTDIR\guide\guide.html"
    CreateShortcut "$SMPROGRAMS\Glymark\$(REMOVE).lnk" "$INSTDIR\uninstall.exe"
    SetOutPath "$INSTDIR"
FunctionEnd

Function register
    WriteRegStr HKCU "${OWN_KEY}" "Program" "$INSTDIR"
    WriteRegStr HKCU "${OWN_KEY}" "Folder" "$folder"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Glymark"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\glymark.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "The Glymark founders"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
FunctionEnd

Section
    StrCpy $folder "$DOCUMENTS"
    ${IfNot} ${FileExists} "$folder\*.*"
        StrCpy $folder "$PROFILE"
    ${EndIf}
    StrCpy $folder "$folder\Glymark"
    CreateDirectory "$folder"
    Call installFiles
    Call settleCzechTexts
    Call addShortcuts
    Call register
SectionEnd

; Only what an installer put there: a folder with anything else in it stays.
Section Uninstall
    ReadRegStr $folder HKCU "${OWN_KEY}" "Folder"
    SetOutPath "$TEMP"
    ${If} $folder != ""
        !insertmacro hasOwnTexts
        Pop $3
        ${If} $3 = 1
            Delete "$folder\czech_cs.qm"
        ${EndIf}
        !insertmacro removeShortcuts
        RMDir "$folder"
    ${EndIf}
    Delete "$INSTDIR\samples\glymark-*.xlsx"
    RMDir "$INSTDIR\samples"
    Delete "$INSTDIR\guide\images\*.png"
    Delete "$INSTDIR\guide\images\*.svg"
    RMDir "$INSTDIR\guide\images"
    Delete "$INSTDIR\guide\guide.html"
    RMDir "$INSTDIR\guide"
    Delete "$INSTDIR\licences\*.txt"
    RMDir "$INSTDIR\licences"
    Delete "$INSTDIR\copyright.txt"
    Delete "$INSTDIR\CITATION.cff"
    Delete "$INSTDIR\glymark.exe"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    DeleteRegKey HKCU "${OWN_KEY}"
SectionEnd
