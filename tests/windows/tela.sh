# Lido pelas provas que abrem janelas: uma tela virtual e o que se espera nela.
# Uso: source tela.sh; tela_virtual; os processos dela ficam em "${processos[@]}", para que quem a pediu os encerre. tela NOME a guarda
# na pasta $telas, se não está vazia.

processos=()
falta() { # <programas...>: diz o primeiro que não há
    local programa
    for programa in "$@"; do
        command -v "$programa" >/dev/null || {
            echo "$programa"
            return 0
        }
    done
    return 1
}
tela_virtual() {
    local numero
    numero=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$numero" >/dev/null 2>&1 &
    processos+=($!)
    until [ -s "$numero" ]; do sleep 0.1; done
    DISPLAY=:$(cat "$numero")
    export DISPLAY
    rm "$numero"
    openbox --sm-disable >/dev/null 2>&1 &
    processos+=($!)
}
tela() { [ -z "$telas" ] || import -window root "$telas/$1.png"; }
ha_janela() { xdotool search --onlyvisible --name "$1" >/dev/null 2>&1; }
aparece() { # <título, expressão regular>: em um minuto
    local vez
    for ((vez = 0; vez < 240; vez++)); do
        ! ha_janela "$1" || { sleep 1 && return 0; }
        sleep 0.25
    done
    return 1
}
some() { # <processo>: em vinte segundos
    local vez
    for ((vez = 0; vez < 80; vez++)); do
        kill -0 "$1" 2>/dev/null || return 0
        sleep 0.25
    done
    kill "$1"
    return 1
}
em_breve() { # <comando...>: dá certo em meio minuto
    local vez
    for ((vez = 0; vez < 60; vez++)); do
        ! "$@" >/dev/null 2>&1 || { sleep 2 && return 0; }
        sleep 0.5
    done
    "$@"
}
tecla() { xdotool key --clearmodifiers "$1" && sleep 1; }
