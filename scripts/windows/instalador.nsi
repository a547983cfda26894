; Instalador do Conferix, para um usuário e sem administrador. conferix-setup.exe /S instala sem perguntar. Com JANELA
; definida, a janela também.
Target amd64-unicode
Unicode true
ManifestSupportedOS Win10
RequestExecutionLevel user
SetCompressor /SOLID lzma

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

!define CHAVE "Software\Microsoft\Windows\CurrentVersion\Uninstall\Conferix"
!define CLASSES "Software\Classes"
!define TIPO "Conferix.TISS"
!define JANELA_EXE "conferix-desktop.exe"

Name "Conferix"
BrandingText "Conferix ${VERSAO}"
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
!define MUI_WELCOMEFINISHPAGE_BITMAP "${IMAGEM}"
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!ifdef JANELA
    !define MUI_FINISHPAGE_TEXT "O Conferix está no menu Iniciar. Os arquivos .xte abrem nele com dois cliques; os .xml, por $\"Abrir com$\"."
    !define MUI_FINISHPAGE_RUN "$INSTDIR\bin\${JANELA_EXE}"
    !define MUI_FINISHPAGE_RUN_TEXT "Abrir o Conferix"
!else
    !define MUI_FINISHPAGE_TEXT "O comando conferix está instalado. Abra um novo Prompt de Comando e escreva: conferix ajuda"
!endif
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
!macro EsperarFimDe PROGRAMA
    ${Do}
        ClearErrors
        ${IfNot} ${FileExists} "$INSTDIR\bin\${PROGRAMA}"
            ${Break}
        ${EndIf}
        FileOpen $0 "$INSTDIR\bin\${PROGRAMA}" a
        ${IfNot} ${Errors}
            FileClose $0
            ${Break}
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "O Conferix está em execução. Encerre-o e tente de novo." /SD IDCANCEL IDRETRY +2
        Abort "O Conferix está em execução; nada foi mudado."
    ${Loop}
!macroend
!macro EsperarFim
    !insertmacro EsperarFimDe conferix.exe
    !insertmacro EsperarFimDe ${JANELA_EXE}
!macroend

; O PowerShell sabe mudar a variável sem o limite de tamanho dos textos daqui.
!macro TirarDoPath
    ReadRegDWORD $1 HKCU "${CHAVE}" "CaminhoMudado"
    ${If} $1 = 1
        nsExec::Exec `powershell -NoProfile -Command "$$p = [Environment]::GetEnvironmentVariable('Path', 'User'); [Environment]::SetEnvironmentVariable('Path', (($$p -split ';' | Where-Object { $$_ -ne '$INSTDIR\bin' }) -join ';'), 'User')"`
        Pop $0
        DeleteRegValue HKCU "${CHAVE}" "CaminhoMudado"
    ${EndIf}
!macroend

; O programa que foi instalado em outra pasta: sem isto ficaria, e ninguém o desinstalaria.
!macro RemoverDeOutraPasta
    ReadRegStr $2 HKCU "${CHAVE}" "InstallLocation"
    ${If} $2 != ""
    ${AndIf} $2 != $INSTDIR
    ${AndIf} ${FileExists} "$2\desinstalar.exe"
        StrCpy $3 $INSTDIR
        StrCpy $INSTDIR $2
        !insertmacro EsperarFim
        !insertmacro RemoverPrograma
        !insertmacro TirarDoPath
        ${If} $1 = 1
            Call EscolherPath
        ${EndIf}
        Delete "$INSTDIR\desinstalar.exe"
        RMDir "$INSTDIR"
        StrCpy $INSTDIR $3
    ${EndIf}
!macroend

; SHCNE_ASSOCCHANGED: o Explorador mostra logo o que mudou.
!macro AvisarExplorador
    System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

; O que abre .xte, e é um dos que abrem .xml; o programa padrão de .xml fica como está.
!macro Associar
    WriteRegStr HKCU "${CLASSES}\${TIPO}" "" "Arquivo TISS"
    WriteRegStr HKCU "${CLASSES}\${TIPO}\DefaultIcon" "" "$INSTDIR\bin\${JANELA_EXE},0"
    WriteRegStr HKCU "${CLASSES}\${TIPO}\shell\open" "FriendlyAppName" "Conferix"
    WriteRegStr HKCU "${CLASSES}\${TIPO}\shell\open\command" "" '"$INSTDIR\bin\${JANELA_EXE}" "%1"'
    ReadRegStr $0 HKCU "${CLASSES}\.xte" ""
    ${If} $0 != ""
    ${AndIf} $0 != "${TIPO}"
        WriteRegStr HKCU "${CLASSES}\${TIPO}" "Anterior" $0
    ${EndIf}
    WriteRegStr HKCU "${CLASSES}\.xte" "" "${TIPO}"
    WriteRegStr HKCU "${CLASSES}\.xte\OpenWithProgids" "${TIPO}" ""
    WriteRegStr HKCU "${CLASSES}\.xml\OpenWithProgids" "${TIPO}" ""
    WriteRegStr HKCU "${CLASSES}\Applications\${JANELA_EXE}" "FriendlyAppName" "Conferix"
    WriteRegStr HKCU "${CLASSES}\Applications\${JANELA_EXE}\SupportedTypes" ".xml" ""
    WriteRegStr HKCU "${CLASSES}\Applications\${JANELA_EXE}\SupportedTypes" ".xte" ""
    WriteRegStr HKCU "${CLASSES}\Applications\${JANELA_EXE}\shell\open\command" "" '"$INSTDIR\bin\${JANELA_EXE}" "%1"'
    !insertmacro AvisarExplorador
!macroend

; Quem passou a abrir .xte depois continua.
!macro Desassociar
    ReadRegStr $0 HKCU "${CLASSES}\.xte" ""
    ${If} $0 == "${TIPO}"
        ReadRegStr $1 HKCU "${CLASSES}\${TIPO}" "Anterior"
        ${If} $1 != ""
            WriteRegStr HKCU "${CLASSES}\.xte" "" $1
        ${Else}
            DeleteRegValue HKCU "${CLASSES}\.xte" ""
        ${EndIf}
    ${EndIf}
    DeleteRegValue HKCU "${CLASSES}\.xte\OpenWithProgids" "${TIPO}"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.xte\OpenWithProgids"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.xte"
    DeleteRegValue HKCU "${CLASSES}\.xml\OpenWithProgids" "${TIPO}"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.xml\OpenWithProgids"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.xml"
    DeleteRegKey HKCU "${CLASSES}\${TIPO}"
    DeleteRegKey HKCU "${CLASSES}\Applications\${JANELA_EXE}"
    !insertmacro AvisarExplorador
!macroend

Section "Conferix" principal
    SectionIn RO
    ; O que se apaga na atualização e no fim está sempre em uma pasta que é só do Conferix.
    ${GetFileName} "$INSTDIR" $0
    ${If} $0 != "Conferix"
        StrCpy $INSTDIR "$INSTDIR\Conferix"
    ${EndIf}
    !insertmacro EsperarFim
    !insertmacro RemoverDeOutraPasta
    ${If} ${FileExists} "$INSTDIR\desinstalar.exe"
        !insertmacro RemoverPrograma
    ${EndIf}
    SetOutPath "$INSTDIR"
    ; O LEIAME diz como usar o programa sem o instalar.
    File /r /x LEIAME.txt "${PASTA}\*.*"
    WriteUninstaller "$INSTDIR\desinstalar.exe"
    CreateShortcut "$SMPROGRAMS\Conferix (linha de comando).lnk" "$SYSDIR\cmd.exe" '/k ""$INSTDIR\bin\conferix.exe" ajuda"' \
        "$INSTDIR\bin\conferix.exe"
!ifdef JANELA
    CreateShortcut "$SMPROGRAMS\Conferix.lnk" "$INSTDIR\bin\${JANELA_EXE}"
    !insertmacro Associar
!endif
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

Section /o "Pôr o comando no PATH do usuário" caminho
    nsExec::Exec `powershell -NoProfile -Command "$$p = [Environment]::GetEnvironmentVariable('Path', 'User'); if (($$p -split ';') -notcontains '$INSTDIR\bin') { [Environment]::SetEnvironmentVariable('Path', ($$p.TrimEnd(';') + ';$INSTDIR\bin').TrimStart(';'), 'User') }"`
    Pop $0
    ${If} $0 != 0
        DetailPrint "O PATH não pôde ser mudado; acrescente a ele $INSTDIR\bin."
    ${Else}
        WriteRegDWORD HKCU "${CHAVE}" "CaminhoMudado" 1
    ${EndIf}
SectionEnd

; Quem tinha o comando no PATH continua a tê-lo, na pasta nova.
Function EscolherPath
    SectionSetFlags ${caminho} ${SF_SELECTED}
FunctionEnd

Section "un.Conferix"
    !insertmacro EsperarFim
    !insertmacro TirarDoPath
    !insertmacro RemoverPrograma
    !insertmacro Desassociar
    Delete "$SMPROGRAMS\Conferix.lnk"
    Delete "$SMPROGRAMS\Conferix (linha de comando).lnk"
    Delete "$INSTDIR\desinstalar.exe"
    RMDir "$INSTDIR"
    DeleteRegKey HKCU "${CHAVE}"
    DetailPrint "Os dados do usuário ficaram em $APPDATA\Brenvo\Conferix."
    MessageBox MB_OK|MB_ICONINFORMATION "Os seus dados (configuração, terminologia importada) ficaram em $APPDATA\Brenvo\Conferix. Se não os quer mais, apague essa pasta." /SD IDOK
SectionEnd
