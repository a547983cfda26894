; Instalador do Conferix, para um usuário e sem administrador. conferix-setup.exe /S instala sem perguntar.
Target amd64-unicode
Unicode true
ManifestSupportedOS Win10
RequestExecutionLevel user
SetCompressor /SOLID lzma

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

!define CHAVE "Software\Microsoft\Windows\CurrentVersion\Uninstall\Conferix"

Name "Conferix"
OutFile "${SAIDA}"
InstallDir "$LOCALAPPDATA\Programs\Conferix"
InstallDirRegKey HKCU "${CHAVE}" "InstallLocation"
VIProductVersion "${VERSAO}.0"
VIAddVersionKey /LANG=1046 "ProductName" "Conferix"
VIAddVersionKey /LANG=1046 "ProductVersion" "${VERSAO}"
VIAddVersionKey /LANG=1046 "FileVersion" "${VERSAO}"
VIAddVersionKey /LANG=1046 "FileDescription" "Instalador do Conferix"
VIAddVersionKey /LANG=1046 "LegalCopyright" "GPL-3.0-or-later"

!define MUI_ICON "${ICONE}"
!define MUI_UNICON "${ICONE}"
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TEXT "O comando conferix está instalado. Abra um novo Prompt de Comando e escreva: conferix ajuda"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "PortugueseBR"

; Os arquivos da versão anterior saem antes: um que não existe mais ficaria para sempre.
!macro RemoverPrograma
    RMDir /r "$INSTDIR\bin"
    RMDir /r "$INSTDIR\share"
    RMDir /r "$INSTDIR\licencas"
    RMDir /r "$INSTDIR\exemplos"
    Delete "$INSTDIR\LICENSE.txt"
!macroend

; Um programa em execução não pode ser substituído.
!macro EsperarFim
    ${Do}
        ClearErrors
        ${IfNot} ${FileExists} "$INSTDIR\bin\conferix.exe"
            ${Break}
        ${EndIf}
        FileOpen $0 "$INSTDIR\bin\conferix.exe" a
        ${IfNot} ${Errors}
            FileClose $0
            ${Break}
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "O Conferix está em execução. Encerre-o e tente de novo." /SD IDCANCEL IDRETRY +2
        Abort "O Conferix está em execução; nada foi mudado."
    ${Loop}
!macroend

Section "Conferix (comando)" principal
    SectionIn RO
    ; O que se apaga na atualização e no fim está sempre em uma pasta que é só do Conferix.
    ${GetFileName} "$INSTDIR" $0
    ${If} $0 != "Conferix"
        StrCpy $INSTDIR "$INSTDIR\Conferix"
    ${EndIf}
    !insertmacro EsperarFim
    ${If} ${FileExists} "$INSTDIR\desinstalar.exe"
        !insertmacro RemoverPrograma
    ${EndIf}
    SetOutPath "$INSTDIR"
    ; O LEIAME diz como usar o programa sem o instalar.
    File /r /x LEIAME.txt "${PASTA}\*.*"
    WriteUninstaller "$INSTDIR\desinstalar.exe"
    CreateShortcut "$SMPROGRAMS\Conferix (linha de comando).lnk" "$SYSDIR\cmd.exe" '/k ""$INSTDIR\bin\conferix.exe" ajuda"' \
        "$INSTDIR\bin\conferix.exe"
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegStr HKCU "${CHAVE}" "DisplayName" "Conferix"
    WriteRegStr HKCU "${CHAVE}" "DisplayVersion" "${VERSAO}"
    WriteRegStr HKCU "${CHAVE}" "DisplayIcon" "$INSTDIR\bin\conferix.exe"
    WriteRegStr HKCU "${CHAVE}" "Publisher" "Conferix"
    WriteRegStr HKCU "${CHAVE}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${CHAVE}" "UninstallString" '"$INSTDIR\desinstalar.exe"'
    WriteRegStr HKCU "${CHAVE}" "QuietUninstallString" '"$INSTDIR\desinstalar.exe" /S'
    WriteRegDWORD HKCU "${CHAVE}" "EstimatedSize" $0
    WriteRegDWORD HKCU "${CHAVE}" "NoModify" 1
    WriteRegDWORD HKCU "${CHAVE}" "NoRepair" 1
SectionEnd

; O PowerShell sabe mudar a variável sem o limite de tamanho dos textos daqui.
Section /o "Pôr o comando no PATH do usuário" caminho
    nsExec::Exec `powershell -NoProfile -Command "$$p = [Environment]::GetEnvironmentVariable('Path', 'User'); if (($$p -split ';') -notcontains '$INSTDIR\bin') { [Environment]::SetEnvironmentVariable('Path', ($$p.TrimEnd(';') + ';$INSTDIR\bin').TrimStart(';'), 'User') }"`
    Pop $0
    ${If} $0 != 0
        DetailPrint "O PATH não pôde ser mudado; acrescente a ele $INSTDIR\bin."
    ${Else}
        WriteRegDWORD HKCU "${CHAVE}" "CaminhoMudado" 1
    ${EndIf}
SectionEnd

Section "un.Conferix"
    !insertmacro EsperarFim
    ReadRegDWORD $1 HKCU "${CHAVE}" "CaminhoMudado"
    ${If} $1 = 1
        nsExec::Exec `powershell -NoProfile -Command "$$p = [Environment]::GetEnvironmentVariable('Path', 'User'); [Environment]::SetEnvironmentVariable('Path', (($$p -split ';' | Where-Object { $$_ -ne '$INSTDIR\bin' }) -join ';'), 'User')"`
        Pop $0
    ${EndIf}
    !insertmacro RemoverPrograma
    Delete "$SMPROGRAMS\Conferix (linha de comando).lnk"
    Delete "$INSTDIR\desinstalar.exe"
    RMDir "$INSTDIR"
    DeleteRegKey HKCU "${CHAVE}"
    DetailPrint "Os dados do usuário ficaram em $APPDATA\Brenvo\Conferix."
    MessageBox MB_OK|MB_ICONINFORMATION "Os seus dados (configuração, terminologia importada) ficaram em $APPDATA\Brenvo\Conferix. Se não os quer mais, apague essa pasta." /SD IDOK
SectionEnd
