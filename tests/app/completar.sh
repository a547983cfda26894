#!/usr/bin/env bash
# What shells offer for words of the command line, in the shells themselves, and whether the manual page is sound.
# Ends with 77 (skipped) where one of the programs is not installed, having tried the others.
# Usage: completar.sh CONFERIX
set -euo pipefail
export PATH=$(dirname "$1"):$PATH
for program in zsh fish mandoc; do
    command -v "$program" >/dev/null || missing="${missing:-} $program"
done
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export HOME=$folder LC_ALL=C.UTF-8
touch lote.xml
mkdir lotes
conferix completar bash >conferix.bash
conferix completar zsh >_conferix
conferix completar fish >conferix.fish
conferix ajuda --formato man >conferix.1

in_bash() {
    bash --norc -c '. ./conferix.bash; read -ra COMP_WORDS <<<"$1"; [[ $1 == *" " ]] && COMP_WORDS+=("")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _conferix; echo "${COMPREPLY[@]}"' bash "$1"
}
in_fish() {
    fish --no-config -c 'source conferix.fish; complete -C $argv[1]' "$1" | cut -f1 | tr '\n' ' '
}

# expect LINE WORDS...: all words are offered; those after "-" are not.
expect() {
    local line=$1 shell offered word wanted
    shift
    for shell in bash ${fish-fish}; do
        offered=" $("in_$shell" "$line") "
        wanted=yes
        for word in "$@"; do
            if [ "$word" = - ]; then
                wanted=no
            elif [[ "$offered" == *[\ /]"$word"[\ /]* ]] && [ $wanted = no ] ||
                [[ "$offered" != *" $word"[\ /]* ]] && [ $wanted = yes ]; then
                printf '%s, "%s": %s (wanted: %s) among:%s\n' "$shell" "$line" "$word" "$wanted" "$offered"
                exit 1
            fi
        done
    done
}
[[ "${missing:-}" == *fish* ]] && fish=
if [ -n "${fish-fish}" ]; then # rules come with what they check
    told=$(fish --no-config -c 'source conferix.fish; complete -C "conferix validar --desativar tiss.mensagem.ha"')
    [[ "$told" == *$'tiss.mensagem.hash\tHash'* ]] || { echo "fish: $told"; exit 1; }
fi
expect 'conferix val' validar - corrigir
expect 'conferix terminologia ' importar consultar - validar
expect 'conferix validar --sem' --sem-subpastas - --saida
expect 'conferix corrigir --no' --no-lugar
expect 'conferix corrigir --codificacao ' ISO-8859-1 UTF-8
expect 'conferix validar --formato ' ndjson - markdown
expect 'conferix regras --formato ' markdown - ndjson
expect 'conferix regras --desativar tiss.mensagem.h' tiss.mensagem.hash
expect 'conferix converter lote.xml --para 4.0' 4.01.00
expect 'conferix documento ' cpf cnpj cns - lote.xml
expect 'conferix hash lot' lote.xml
expect 'conferix ajuda term' terminologia - validar
expect 'conferix ajuda terminologia ' importar consultar - validar
expect 'conferix validar lote.xml --esquemas lot' lotes - lote.xml

if [[ "${missing:-}" != *zsh* ]]; then
    told=$(zsh -f -c '
        zmodload zsh/zpty
        zpty shell zsh -f -i
        zpty -w shell "PS1=; fpath=($PWD \$fpath); autoload -Uz compinit; compinit -u -D"
        zpty -w -n shell $'"'conferix terminologia imp\t novo.zip --subs\t'"'
        for i in {1..100}; do
            sleep 0.1
            while zpty -r -t shell part; do text+=$part; done
            [[ $text == *importar*--substituir* ]] && break
        done
        print -r -- $text')
    if [[ "$told" != *importar*--substituir* ]]; then
        printf 'zsh: %s\n' "$told"
        exit 1
    fi
fi
if [[ "${missing:-}" != *mandoc* ]]; then
    # The page has no date: it belongs to a version.
    faults=$(mandoc -T lint -W warning conferix.1 | grep -v 'missing date' || true)
    if [ -n "$faults" ]; then
        echo "$faults"
        exit 1
    fi
fi
if [ -n "${missing:-}" ]; then
    echo "not installed:$missing"
    exit 77
fi
