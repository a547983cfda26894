#!/usr/bin/env bash
# Executa todos os exemplos em todos os comandos com o programa para Windows, no Wine, e com o do Linux: saída, erros, status
# e arquivos gravados têm de ser iguais byte a byte. Só as identidades das mensagens, a hora e a pasta dos dados são outras.
# Uso: tests/windows/comparar.sh [conferix do Linux] [conferix.exe] [exemplos, como 'consulta-*.xml']
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
linux=$(realpath "${1:-$raiz/build/release/bin/conferix}")
windows=$(realpath "${2:-$raiz/build/windows/bin/conferix.exe}")
executar=$raiz/scripts/windows/executar
area=$(mktemp -d)
trap 'rm -rf "$area"' EXIT
# O Wine toma da localidade o país e a codificação dos nomes de arquivos.
export LC_ALL=pt_BR.UTF-8 TZ=America/Sao_Paulo NO_COLOR=1
casos=0 diferencas=0 separadores=

em_linux() { CONFERIX_DADOS=$area/linux/dados CONFERIX_INI=$area/linux/dados/Conferix.ini "$linux" "$@"; }
em_windows() { CONFERIX_DADOS=../dados CONFERIX_INI=../dados/Conferix.ini "$executar" "$windows" "$@"; }

# Na pasta de cada um, que tem os mesmos arquivos; a saída vai para ../saida.
um_lado() { # <linux|windows> <entrada> <argumentos...>
    local lado=$1 entrada=$2 status=0
    shift 2
    (cd "$area/$lado/trabalho" && "em_$lado" "$@" <"$entrada" >../saida 2>../erros) || status=$?
    echo "$status" >"$area/$lado/status"
    sed -i -E 's/\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\}/{id}/g
        s/[0-9]{2}\/[0-9]{2}\/[0-9]{4},? [0-9]{2}:[0-9]{2}(:[0-9]{2})?/HORA/g
        s/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]+(Z|[-+][0-9:]+)?/HORA/g
        s/^(Pasta dos schemas: ).*/\1PASTA/
        s/[^" ]*tuss\.db/BASE/' "$area/$lado/saida" "$area/$lado/erros"
    [ -z "$separadores" ] || sed -i 's/\\\{1,2\}/\//g' "$area/$lado/saida" "$area/$lado/erros"
}

comparar() { # <entrada> <argumentos...>
    um_lado linux "$@"
    um_lado windows "$@"
    casos=$((casos + 1))
    local parte
    for parte in status saida erros trabalho; do
        if ! diff -r "$area/linux/$parte" "$area/windows/$parte" >"$area/diferenca" 2>&1; then
            diferencas=$((diferencas + 1))
            echo "DIFERENTE ($parte): conferix ${*:2}"
            head -n 6 "$area/diferenca"
            rm -rf "$area/windows/trabalho"
            cp -r "$area/linux/trabalho" "$area/windows/trabalho"
        fi
    done
}

for lado in linux windows; do
    mkdir -p "$area/$lado/dados" "$area/$lado/trabalho/com acentuação e espaço" "$area/$lado/trabalho/$(printf 'n%.0s' {1..150})"
    cp -r "$raiz"/exemplos/*.xml "$raiz/exemplos/terminologia" "$area/$lado/trabalho"
done
longo=$(printf 'n%.0s' {1..150})/$(printf 'm%.0s' {1..150}).xml

for exemplo in "$raiz"/exemplos/${3:-*.xml}; do
    nome=$(basename "$exemplo")
    for formato in texto json ndjson csv sarif junit html; do
        comparar /dev/null validar "$nome" --formato "$formato"
    done
    comparar /dev/null validar "$nome" --todas --detalhar
    for comando in informar hash versoes; do
        comparar /dev/null $comando "$nome"
        comparar /dev/null $comando "$nome" --formato json
    done
    for listagem in guias capa procedimentos despesas profissionais entrega; do
        comparar /dev/null listar $listagem "$nome"
    done
    comparar /dev/null listar guias "$nome" --formato csv
    comparar /dev/null imprimir "$nome" --saida "guias de $nome.pdf"
    comparar "$nome" validar -
    comparar /dev/null corrigir "$nome" --todas --simular
    comparar /dev/null corrigir "$nome" --estrutura --com-perdas --simular
    comparar /dev/null converter "$nome" --para 4.01.00 --saida "convertido $nome"
    comparar /dev/null corrigir "$nome" --codificacao UTF-8 --saida "utf8 $nome"
    for lado in linux windows; do
        cp "$exemplo" "$area/$lado/trabalho/com acentuação e espaço/ção $nome"
        cp "$exemplo" "$area/$lado/trabalho/$longo"
    done
    comparar /dev/null corrigir "com acentuação e espaço/ção $nome" --todas --no-lugar --copia
    comparar /dev/null corrigir "$longo" --todas --no-lugar
done

# Os nomes que o programa acha em uma pasta têm os separadores do sistema.
separadores=1
comparar /dev/null validar . --formato json
separadores=
comparar /dev/null regras --formato json
comparar /dev/null regras
comparar /dev/null ajuda corrigir
comparar /dev/null documento cpf 52998224725
comparar /dev/null documento cnpj 123 --formato json
comparar /dev/null esquemas listar
comparar /dev/null terminologia procurar consulta
comparar /dev/null terminologia consultar --tabela 63 --codigo 00 --data 2024-01-01
comparar /dev/null terminologia importar terminologia
comparar /dev/null terminologia procurar consulta
comparar /dev/null terminologia consultar --tabela 22 --codigo 10101012 --data 2024-01-01
comparar /dev/null validar consulta-4.01.00-com-erros.xml --formato json
comparar /dev/null proxy
comparar /dev/null proxy --modo manual --servidor 127.0.0.1 --porta 3128
comparar /dev/null completar bash
comparar /dev/null validar naoexiste.xml ./ausente/x.xml
comparar /dev/null validar --nada
comparar /dev/null validar -- -x.xml
comparar /dev/null corrigir consulta-4.01.00-com-erros.xml --todas --saida ausente/x.xml

echo "$casos casos, $diferencas diferenças."
[ "$diferencas" -eq 0 ]
