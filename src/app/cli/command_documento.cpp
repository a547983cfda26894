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
    bool (*IsValid)(std::string_view);
};

constexpr std::array<TDocumentKind, 3> kKinds = {{
    {"cpf", "CPF", 11, &TDocumentsValidation::IsValidCpf},
    {"cnpj", "CNPJ", 14, &TDocumentsValidation::IsValidCnpj},
    {"cns", "CNS", 15, &TDocumentsValidation::IsValidCNS},
}};

constexpr std::size_t kCheckDigits = 2;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return c >= 'A' && c <= 'Z';
}

/// The number without the punctuation that people write, letters of a CNPJ as capitals.
std::string Bare(const TDocumentKind& kind, std::string_view value) {
    std::string bare;
    for (const char c : value)
        if (std::string_view(".-/ \t").find(c) == std::string_view::npos)
            bare += c >= 'a' && c <= 'z' && kind.Name == "cnpj" ? static_cast<char>(c - 'a' + 'A') : c;
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

/// Whether there is but one digit again and again; the last is not looked at.
bool IsRepeated(const std::string& number) {
    return number.find_first_not_of(number.front()) >= number.size() - 1;
}

/// Why a number is none of its kind, in sentences; empty when it is one.
std::string FaultOf(const TDocumentKind& kind, const std::string& number) {
    if (number.empty())
        return "Não há nenhum dígito.";
    const bool letters = HasLetters(kind, number);
    const bool whole = number.size() == kind.Length;
    // Letters stand before the check digits; a number that is too long or short is told so first.
    const std::size_t free = !letters ? 0 : whole ? kind.Length - kCheckDigits : number.size();
    for (std::size_t i = free; i < number.size(); ++i)
        if (!IsDigit(number[i]))
            return fmt::format("O caractere \"{}\" não é um dígito.",
                               Visible(std::string_view(number).substr(
                                   i, BytesOfCharacters(std::string_view(number).substr(i), 1))));
    if (!whole)
        return fmt::format("Tem {}; um {} tem {}.",
                           letters ? Counted(number.size(), "caractere", "caracteres")
                                   : Counted(number.size(), "dígito", "dígitos"),
                           kind.Label, kind.Length);
    if (letters && HasRightCheckDigits(number))
        return "Tem letras, como os CNPJ novos podem ter, e os dígitos verificadores conferem; mas as regras "
               "dos campos 014 e 075 do monitoramento só aceitam dígitos, e dos lotes só os da versão "
               "4.03.00 aceitam letras.";
    if (!letters && kind.IsValid(number))
        return "";
    return IsRepeated(number)
               ? fmt::format("O dígito {} se repete.", number.front())
               : "Os dígitos verificadores não conferem com os outros; veja se algum foi trocado.";
}

/// What is to be known of a valid number beyond its digits; empty for nothing.
std::string_view NoteOn(const TDocumentKind& kind, const std::string& number) {
    if (kind.Name != "cns" || std::string_view("12789").find(number.front()) != std::string_view::npos)
        return "";
    return IsRepeated(number)
               ? "Os dígitos verificadores conferem, mas o número só repete um dígito, e o CNS de "
                 "uma pessoa começa com 1, 2, 7, 8 ou 9."
               : "Os dígitos verificadores conferem, mas o CNS de uma pessoa começa com 1, 2, 7, "
                 "8 ou 9.";
}

} // namespace

int RunDocumento(const TCliContext& context, const std::string& documento, const std::string& valor) {
    const TDocumentKind& kind =
        *std::ranges::find_if(kKinds, [&](const TDocumentKind& k) { return k.Name == documento; });
    const std::string number = Bare(kind, valor);
    const std::string fault = FaultOf(kind, number);
    const std::string_view note = fault.empty() ? NoteOn(kind, number) : "";
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
            << (fault.empty() ? "válido" : "inválido. " + fault) << '\n';
        if (!note.empty())
            out << note << '\n';
    }
    return fault.empty() ? kExitValid : kExitInvalid;
}

} // namespace conferix
