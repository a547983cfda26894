#include "app/cli/commands.h"
#include "platform/utf8.h"
#include "report/console.h"
#include "report/message_json.h"
#include "rules/documents/documents_validation.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>

namespace conferix {

namespace {

struct TDocumentKind {
    std::string_view Name;
    std::string_view Label;
    std::size_t Length;
    bool RefusesRepetition;
    bool (*IsValid)(std::string_view);
};

constexpr std::array<TDocumentKind, 3> kKinds = {{
    {"cpf", "CPF", 11, true, &TDocumentsValidation::IsValidCpf},
    {"cnpj", "CNPJ", 14, true, &TDocumentsValidation::IsValidCnpj},
    {"cns", "CNS", 15, false, &TDocumentsValidation::IsValidCNS},
}};

constexpr std::size_t kCheckDigits = 2;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return c >= 'A' && c <= 'Z';
}

/// The number without the punctuation that people write, letters as capitals.
std::string Bare(std::string_view value) {
    std::string bare;
    for (const char c : value)
        if (std::string_view(".-/ \t").find(c) == std::string_view::npos)
            bare += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return bare;
}

/// Whether a CNPJ has the form that takes letters before the check digits.
bool HasLetters(const TDocumentKind& kind, const std::string& number) {
    return kind.Name == "cnpj" && std::ranges::any_of(number, IsLetter) &&
           std::ranges::all_of(number, [](char c) { return IsDigit(c) || IsLetter(c); });
}

/// The check digits of a CNPJ with letters: each character counts as its code less that of "0", with the
/// weights 2 to 9 from the right.
bool HasRightCheckDigits(const std::string& number) {
    for (std::size_t at = number.size() - kCheckDigits; at < number.size(); ++at) {
        int sum = 0;
        int weight = 2;
        for (std::size_t i = at; i-- > 0; weight = weight == 9 ? 2 : weight + 1)
            sum += (number[i] - '0') * weight;
        const int digit = sum % 11 < 2 ? 0 : 11 - sum % 11;
        if (number[at] != '0' + digit)
            return false;
    }
    return true;
}

/// Why a number is none of its kind, as a sentence's part; empty when it is one.
std::string FaultOf(const TDocumentKind& kind, const std::string& number) {
    const bool letters = HasLetters(kind, number);
    if (number.empty())
        return "não há nenhum dígito";
    const std::size_t free = letters && number.size() == kind.Length ? kind.Length - kCheckDigits : 0;
    for (std::size_t i = free; i < number.size() && letters == (free != 0); ++i)
        if (!IsDigit(number[i]))
            return fmt::format("o caractere \"{}\" não é um dígito",
                               Visible(std::string_view(number).substr(
                                   i, BytesOfCharacters(std::string_view(number).substr(i), 1))));
    if (number.size() != kind.Length)
        return fmt::format("tem {}; um {} tem {}",
                           letters ? Counted(number.size(), "caractere", "caracteres")
                                   : Counted(number.size(), "dígito", "dígitos"),
                           kind.Label, kind.Length);
    if (letters ? HasRightCheckDigits(number) : kind.IsValid(number))
        return "";
    if (kind.RefusesRepetition && number.find_first_not_of(number.front()) >= number.size() - 1)
        return fmt::format("o dígito {} se repete", number.front());
    return "os dígitos verificadores não conferem com os outros; veja se algum foi trocado";
}

constexpr std::string_view kLettersNote = "O CNPJ tem letras, como os novos podem ter. Dos schemas do TISS, "
                                          "só o aceitam os da versão 4.03.00 e os de "
                                          "monitoramento a partir de 1.05.00.";

constexpr std::string_view kFirstDigitNote = "Os dígitos verificadores conferem, mas o CNS de uma pessoa "
                                             "começa com 1, 2, 7, 8 ou 9.";

/// What is to be known of a number beyond its digits; empty for nothing.
std::string_view NoteOn(const TDocumentKind& kind, const std::string& number, bool isValid) {
    if (HasLetters(kind, number))
        return kLettersNote;
    const bool isCns = kind.Name == "cns";
    return isCns && isValid && std::string_view("12789").find(number.front()) == std::string_view::npos
               ? kFirstDigitNote
               : "";
}

} // namespace

int RunDocumento(const TCliContext& context, const std::string& documento, const std::string& valor) {
    const TDocumentKind& kind =
        *std::ranges::find_if(kKinds, [&](const TDocumentKind& k) { return k.Name == documento; });
    const std::string number = Bare(valor);
    const std::string fault = FaultOf(kind, number);
    const std::string_view note = NoteOn(kind, number, fault.empty());
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText({{"documento", documento},
                         {"valor", valor},
                         {"numero", number},
                         {"valido", fault.empty()},
                         {"motivo", fault},
                         {"observacao", note}})
            << '\n';
    } else {
        out << kind.Label << ' ' << Visible(valor) << ": "
            << (fault.empty() ? "válido" : fmt::format("inválido: {}.", fault)) << '\n';
        if (!note.empty())
            out << note << '\n';
    }
    return fault.empty() ? kExitValid : kExitInvalid;
}

} // namespace conferix
