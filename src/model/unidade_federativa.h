// The states of Brazil.
#pragma once

#include <algorithm>
#include <string_view>

namespace conferix {

/// A state by its two letters and by the code of the IBGE.
struct TUnidadeFederativa {
    std::string_view Sigla;
    std::string_view Ibge;
};

inline constexpr TUnidadeFederativa kUnidadesFederativas[] = {
    {"RO", "11"}, {"AC", "12"}, {"AM", "13"}, {"RR", "14"}, {"PA", "15"}, {"AP", "16"}, {"TO", "17"},
    {"MA", "21"}, {"PI", "22"}, {"CE", "23"}, {"RN", "24"}, {"PB", "25"}, {"PE", "26"}, {"AL", "27"},
    {"SE", "28"}, {"BA", "29"}, {"MG", "31"}, {"ES", "32"}, {"RJ", "33"}, {"SP", "35"}, {"PR", "41"},
    {"SC", "42"}, {"RS", "43"}, {"MS", "50"}, {"MT", "51"}, {"GO", "52"}, {"DF", "53"}};

/// The IBGE code of a state's letters, the letters of an IBGE code; empty for anything else.
constexpr std::string_view OtherCodeOfUf(std::string_view code) {
    const auto isSigla = [code](std::string_view sigla) {
        return std::ranges::equal(code, sigla, [](char c, char wanted) {
            return c == wanted || (c >= 'a' && c <= 'z' && c - 'a' + 'A' == wanted);
        });
    };
    for (const TUnidadeFederativa& uf : kUnidadesFederativas) {
        if (isSigla(uf.Sigla))
            return uf.Ibge;
        if (code == uf.Ibge)
            return uf.Sigla;
    }
    return {};
}

} // namespace conferix
