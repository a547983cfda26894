#include "xml/schema/schema_messages.h"

#include "xml/cut_text.h"
#include "xml/schema/compiled_schema.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace conferix {

namespace {

constexpr std::size_t kShownNames = 10;
constexpr std::size_t kShownSequence = 60;

std::string Tag(std::string_view name) {
    return name == "*" ? std::string("um elemento de outro namespace") : "<" + CutText(name) + ">";
}

std::string Quote(std::string_view text) {
    return QuoteText(text);
}

std::string In(const TSchemaFault& fault) {
    return fault.Parent.empty() ? std::string() : " em " + Tag(fault.Parent);
}

std::string Number(std::int64_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

/// "<a>, <b> ou <c>"; a long list is cut and says so.
std::string Tags(const std::vector<std::string>& names, std::string_view beforeLast = " ou ",
                 std::size_t most = kShownNames) {
    std::string result;
    const std::size_t shown = std::min(names.size(), most);
    for (std::size_t i = 0; i < shown; ++i) {
        const bool last = i + 1 == names.size();
        result.append(i == 0 ? std::string_view{} : last ? beforeLast : ", ").append(Tag(names[i]));
    }
    return names.size() > shown ? result + " e outros" : result;
}

std::string Codes(const std::vector<std::string>& codes) {
    std::string result;
    for (const std::string& code : codes)
        result += (result.empty() ? "" : ", ") + (code.empty() ? std::string("(vazio)") : CutText(code));
    return result;
}

/// The words below begin with "deve ter " or "deve ser ".
constexpr std::size_t kPatternVerb = std::string_view("deve ter ").size();
/// What a value has to look like, by the pattern that demands it; the standard's schemas have these.
struct TPatternWords {
    std::string_view Pattern;
    std::string_view Words;
};
constexpr TPatternWords kPatternWords[] = {
    {"[0-9]{14}", "deve ter 14 algarismos, sem pontos, barra ou hífen"},
    {"[0-9]{11}", "deve ter 11 algarismos, sem pontos ou hífen"},
    {"[0-9]{11,14}", "deve ter de 11 a 14 algarismos, sem pontos, barra ou hífen"},
    {"[0-9]{6}", "deve ter 6 algarismos"},
    {"[0-9]{3}", "deve ter 3 algarismos"},
    {"[0-9]{1,7}", "deve ter de 1 a 7 algarismos, e nada além deles"},
    {"[0-9]{1,15}", "deve ter de 1 a 15 algarismos, e nada além deles"},
    {"[0-9]{4}[0-9]{2}", "deve ser ano e mês, AAAAMM, por exemplo 202309"},
    {"[0-9]{2}:[0-9]{2}", "deve ser hora e minuto, HH:MM, por exemplo 14:30"},
    {"[0-9]{2}/[0-9]{2}/[0-9]{4}", "deve ser dia, mês e ano, DD/MM/AAAA, por exemplo 15/03/2024"},
    {"[0-9]{2}/[0-9]{2}/[0-9]{4}H[0-9]{2}:[0-9]{2}",
     "deve ser data e hora com a letra H entre elas, por exemplo 15/03/2024H14:30"},
    {"[A-Z0-9]{12}[0-9]{2}", "deve ter 14 caracteres, sem pontos, barra ou hífen: 12 algarismos ou letras "
                             "maiúsculas e, no fim, 2 algarismos"},
    {"[A-Z0-9]{12}[0-9]{2}|[0-9]{11}",
     "deve ser um CNPJ (12 algarismos ou letras maiúsculas e, no fim, 2 algarismos) ou um CPF (11 "
     "algarismos), sem pontos, barra ou hífen"},
    {"[a-zA-Z0-9]+", "deve ter só letras sem acento e algarismos, sem espaços nem sinais"},
    {"[a-zA-Z0-9]{1,10}", "deve ter de 1 a 10 letras sem acento ou algarismos, sem espaços nem sinais"},
    {"[a-zA-Z0-9]{1,20}", "deve ter de 1 a 20 letras sem acento ou algarismos, sem espaços nem sinais"},
    {"[OLMVDIP]{1,5}", "deve ter de 1 a 5 das letras O, L, M, V, D, I e P, maiúsculas e sem espaços"},
};

/// "O valor "v" de <x>" or "O valor "v" do atributo "a" de <x>".
std::string ValueOfSubject(const TSchemaFault& fault) {
    const std::string value = "O valor " + Quote(fault.Found);
    if (fault.Attribute == nullptr)
        return value + " de " + Tag(fault.Name);
    return value + " do atributo " + Quote(fault.Name) + " de " + Tag(fault.Parent);
}

// ---- structure

std::string UnknownRoot(const TSchemaFault& fault) {
    return "A raiz " + Tag(fault.Name) + " não é conhecida neste esquema. Esperado: " + Tags(fault.Expected) +
           ".";
}

std::string UndeclaredPrefix(const TSchemaFault& fault) {
    return "O prefixo " + Quote(fault.Found) + ", usado em " + Tag(fault.Name) +
           ", não foi declarado: falta o atributo xmlns:" + CutText(fault.Found) + ".";
}

std::string UnknownElement(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " não é conhecido" + In(fault) + ". " +
           (fault.Expected.empty() ? std::string("Nenhum outro elemento é esperado aqui.")
                                   : "Esperado aqui: " + Tags(fault.Expected) + ".");
}

std::string WrongCase(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + In(fault) +
           " tem letras maiúsculas e minúsculas trocadas: o nome certo é " + Tag(fault.Bound) +
           (fault.Namespace.empty() ? std::string() : ", no namespace " + Quote(fault.Namespace)) + ".";
}

std::string WrongNamespace(const TSchemaFault& fault) {
    const std::string place =
        fault.Parent.empty() ? "A raiz " + Tag(fault.Name) : "O elemento " + Tag(fault.Name) + In(fault);
    const std::string right =
        fault.Bound.empty() ? "deve ficar sem namespace." : "o certo é \"" + fault.Bound + "\".";
    return place +
           (fault.Found.empty() ? std::string(" está sem namespace")
                                : " está no namespace " + Quote(fault.Found)) +
           "; " + right;
}

std::string Misspelled(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " não é conhecido" + In(fault) + ". O nome certo parece ser " +
           Tag(fault.Bound) + ".";
}

std::string RenamedElement(const TSchemaFault& fault) {
    return "No lugar de " + Tag(fault.Name) + In(fault) + " deve estar " + Tag(fault.Bound) +
           ", o nome nesta versão.";
}

std::string UndeclaredByName(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + In(fault) + " não está descrito em nenhum esquema.";
}

std::string OutOfOrder(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " está fora de ordem" + In(fault) + ": deve vir " +
           (fault.Before.empty() ? std::string("por último") : "antes de " + Tag(fault.Before)) + ".";
}

std::string WrongSequence(const TSchemaFault& fault) {
    return "Os elementos" + In(fault) +
           " estão fora de ordem. A ordem certa é: " + Tags(fault.Expected, ", ", kShownSequence) + ".";
}

std::string OutsideElement(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " está fora de " + Tag(fault.Bound) + ", onde deve ficar.";
}

std::string MissingWrapper(const TSchemaFault& fault) {
    const std::string first = Tag(fault.Expected.front());
    const std::string last = Tag(fault.Expected.back());
    const std::string inside = fault.Count == 1   ? first
                               : first == last    ? first + " (" + std::to_string(fault.Count) + " vezes)"
                               : fault.Count == 2 ? first + " e " + last
                                                  : first + " ... " + last;
    return "Falta " + Tag(fault.Name) + " em volta de " + inside + In(fault) + ".";
}

std::string ExclusiveElement(const TSchemaFault& fault) {
    if (fault.Remedy == TSchemaRemedy::Remove)
        return "Remova " + Tag(fault.Name) + ", que está vazio:" + In(fault) + " já está " +
               Tags(fault.Expected) + ", e só cabe um deles.";
    return "O elemento " + Tag(fault.Name) + " não pode estar" + In(fault) + " junto com " +
           Tags(fault.Expected) + ".";
}

std::string Place(const TSchemaFault& fault) {
    return In(fault) + (fault.Before.empty() ? "." : ", antes de " + Tag(fault.Before) + ".");
}

std::string MissingElement(const TSchemaFault& fault) {
    return (fault.Name == "*" ? "Falta " : "Falta o elemento obrigatório ") + Tag(fault.Name) + Place(fault);
}

std::string MissingSeveral(const TSchemaFault& fault) {
    return "Faltam" + In(fault) + (fault.Before.empty() ? "" : ", antes de " + Tag(fault.Before)) + ": " +
           Tags(fault.Expected, " e ", kShownSequence) + ".";
}

std::string MissingChoice(const TSchemaFault& fault) {
    return "Falta um destes elementos: " + Tags(fault.Expected) + Place(fault);
}

std::string TooMany(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " aparece " + Number(fault.Count, "vez", "vezes") + In(fault) +
           "; o máximo é " + std::to_string(fault.Limit) + ".";
}

std::string TextNotAllowed(const TSchemaFault& fault) {
    return "Há texto solto em " + Tag(fault.Name) + ", onde só cabem elementos: " + Quote(fault.Found) + ".";
}

std::string ContentNotAllowed(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " deve ficar vazio.";
}

std::string ElementInSimpleType(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " não pode estar" + In(fault) + ", que contém apenas um valor.";
}

std::string UnknownAttribute(const TSchemaFault& fault) {
    return "O atributo " + Quote(fault.Name) + " não é conhecido" + In(fault) + "." +
           (fault.Expected.empty() ? "" : " Atributos possíveis: " + Codes(fault.Expected) + ".");
}

std::string MissingAttribute(const TSchemaFault& fault) {
    return "Falta o atributo obrigatório " + Quote(fault.Name) + In(fault) + ".";
}

std::string UnknownType(const TSchemaFault& fault) {
    return "O tipo " + Quote(fault.Found) + ", indicado por xsi:type" + In(fault) + ", não é conhecido.";
}

std::string TypeNotDerived(const TSchemaFault& fault) {
    return "O tipo " + Quote(fault.Found) + ", indicado por xsi:type" + In(fault) +
           ", não pode substituir o tipo declarado.";
}

std::string NilNotAllowed(const TSchemaFault& fault) {
    return "O atributo xsi:nil não é permitido" + In(fault) + ".";
}

std::string NilWithContent(const TSchemaFault& fault) {
    return "O elemento " + Tag(fault.Name) + " deve ficar vazio, pois está marcado com xsi:nil.";
}

std::string DuplicateId(const TSchemaFault& fault) {
    return "O identificador " + Quote(fault.Found) + " aparece mais de uma vez no arquivo.";
}

// ---- values

/// "1, 2 ou 3"; of a longer list nothing.
std::string ShortList(const std::vector<std::string>& codes) {
    constexpr std::size_t kMost = 6;
    if (codes.size() > kMost)
        return {};
    std::string list;
    for (std::size_t i = 0; i < codes.size(); ++i)
        list += (i == 0 ? "" : i + 1 == codes.size() ? " ou " : ", ") + CutText(codes[i]);
    return list;
}

/// What a value of a type looks like, in few words; empty where there is little to say.
std::string ValueHint(const TSchemaSimpleType& type) {
    if (const auto& codes = type.Facets.Codes; !codes.empty()) {
        const std::string list = ShortList(codes);
        return list.empty() ? "um dos " + std::to_string(codes.size()) + " códigos da lista, por exemplo " +
                                  CutText(codes.front())
                            : list;
    }
    for (const TSchemaPattern& pattern : type.Facets.Patterns)
        for (const auto& [known, words] : kPatternWords)
            if (pattern.Text == known)
                return std::string(words.substr(kPatternVerb));
    switch (type.Kind) {
    case TSchemaValueKind::Date:
        return "data AAAA-MM-DD";
    case TSchemaValueKind::Time:
        return "hora HH:MM:SS";
    case TSchemaValueKind::Decimal:
        return "um número, com ponto antes das casas decimais";
    case TSchemaValueKind::Integer:
        return "um número inteiro";
    default:
        break;
    }
    const TSchemaFacets& facets = type.Facets;
    if (facets.Length)
        return Number(*facets.Length, "caractere", "caracteres");
    if (!facets.MaxLength)
        return {};
    std::string most = Number(*facets.MaxLength, "caractere", "caracteres");
    const std::uint32_t least = facets.MinLength.value_or(0);
    if (least == *facets.MaxLength)
        return most;
    return least > 1 ? "de " + std::to_string(least) + " a " + most : "até " + most;
}

std::string EmptyValue(const TSchemaFault& fault) {
    const std::string hint = fault.Type != nullptr ? ValueHint(*fault.Type) : std::string();
    if (fault.Attribute != nullptr)
        return "Preencha o atributo " + Quote(fault.Name) + " de " + Tag(fault.Parent) +
               (hint.empty() ? "" : " (" + hint + ")") + ".";
    if (fault.Optional)
        return "Preencha " + Tag(fault.Name) + (hint.empty() ? "" : " (" + hint + ")") +
               " ou remova o elemento: não é obrigatório.";
    return "Preencha " + Tag(fault.Name) + ": é obrigatório" + (hint.empty() ? "" : ", " + hint) + ".";
}

std::string SpaceAround(const TSchemaFault& fault) {
    return "O valor " +
           (fault.Attribute == nullptr ? "de " + Tag(fault.Name)
                                       : "do atributo " + Quote(fault.Name) + " de " + Tag(fault.Parent)) +
           " tem espaço ou quebra de linha antes ou depois: escreva " + Quote(fault.Bound) + ".";
}

std::string NotInList(const TSchemaFault& fault) {
    const std::string outside = ValueOfSubject(fault) + " não está na lista de códigos permitidos";
    if (!fault.Bound.empty())
        return outside + ": escreva " + Quote(fault.Bound) + ".";
    const std::string count = " (" + Number(fault.Count, "código", "códigos") + ")";
    const bool all = static_cast<std::int64_t>(fault.Expected.size()) == fault.Count;
    if (!all && !fault.Similar.empty())
        return outside + count + ". Parecidos: " + Codes(fault.Similar) + ".";
    return outside + count + ": " + Codes(fault.Expected) + (all ? "." : "...");
}

std::string Length(const TSchemaFault& fault, std::string_view what, std::string_view limit) {
    return ValueOfSubject(fault) + " é " + std::string(what) + ": tem " +
           Number(fault.Count, "caractere", "caracteres") + "; " + std::string(limit) + " " +
           std::to_string(fault.Limit) + ".";
}

std::string TooLong(const TSchemaFault& fault) {
    return Length(fault, "longo demais", "o máximo é");
}

std::string TooShort(const TSchemaFault& fault) {
    return Length(fault, "curto demais", "o mínimo é");
}

std::string WrongLength(const TSchemaFault& fault) {
    return ValueOfSubject(fault) + " tem " + Number(fault.Count, "caractere", "caracteres") +
           "; deve ter exatamente " + std::to_string(fault.Limit) + ".";
}

std::string TooManyDigits(const TSchemaFault& fault) {
    return ValueOfSubject(fault) + " tem " + Number(fault.Count, "dígito", "dígitos") + "; o máximo é " +
           std::to_string(fault.Limit) + ".";
}

std::string TooManyDecimals(const TSchemaFault& fault) {
    return ValueOfSubject(fault) + " tem " + Number(fault.Count, "casa decimal", "casas decimais") +
           "; o máximo é " + std::to_string(fault.Limit) + ".";
}

std::string BelowMinimum(const TSchemaFault& fault) {
    return ValueOfSubject(fault) + " é menor do que o mínimo, " + fault.Bound + ".";
}

std::string WrongPattern(const TSchemaFault& fault) {
    const auto* words = std::find_if(std::begin(kPatternWords), std::end(kPatternWords),
                                     [&](const TPatternWords& row) { return row.Pattern == fault.Bound; });
    if (words != std::end(kPatternWords))
        return ValueOfSubject(fault) + " " + std::string(words->Words) + ".";
    return ValueOfSubject(fault) + " não tem o formato exigido: " + CutText(fault.Bound) + ".";
}

/// "O valor "x" de <y> não é uma data válida. Esperado: AAAA-MM-DD, por exemplo 2024-03-15."
template<const char* What, const char* Example>
std::string NotOfForm(const TSchemaFault& fault) {
    return ValueOfSubject(fault) + " não é " + What + ". Esperado: " + Example + ".";
}

constexpr char kDecimal[] = "um número válido";
constexpr char kDecimalForm[] = "algarismos, com ponto antes das casas decimais, por exemplo 1234.56";
constexpr char kInteger[] = "um número inteiro válido";
constexpr char kIntegerForm[] = "só algarismos, por exemplo 12";
constexpr char kBoolean[] = "um valor lógico válido";
constexpr char kBooleanForm[] = "true, false, 1 ou 0";
constexpr char kDate[] = "uma data válida";
constexpr char kDateForm[] = "AAAA-MM-DD, por exemplo 2024-03-15";
constexpr char kTime[] = "um horário válido";
constexpr char kTimeForm[] = "HH:MM:SS, por exemplo 14:30:00";
constexpr char kDateTime[] = "uma data com horário válida";
constexpr char kDateTimeForm[] = "AAAA-MM-DDTHH:MM:SS, por exemplo 2024-03-15T14:30:00";
constexpr char kBase64[] = "um conteúdo válido em Base64";
constexpr char kBase64Form[] = "letras, algarismos, +, / e = no fim";
constexpr char kUri[] = "um endereço (URI) válido";
constexpr char kUriForm[] = "por exemplo http://www.exemplo.com.br/pagina";
constexpr char kName[] = "um nome válido";
constexpr char kNameForm[] = "uma letra ou _ no começo, depois letras, algarismos, ponto, - ou _";

using TSentence = std::string (*)(const TSchemaFault&);

struct TEntry {
    TSchemaFaultCode Code;
    TSentence Sentence;
};

constexpr TEntry kCatalogue[] = {
    {TSchemaFaultCode::UnknownRoot, UnknownRoot},
    {TSchemaFaultCode::UndeclaredPrefix, UndeclaredPrefix},
    {TSchemaFaultCode::UnknownElement, UnknownElement},
    {TSchemaFaultCode::WrongCase, WrongCase},
    {TSchemaFaultCode::WrongNamespace, WrongNamespace},
    {TSchemaFaultCode::Misspelled, Misspelled},
    {TSchemaFaultCode::RenamedElement, RenamedElement},
    {TSchemaFaultCode::UndeclaredByName, UndeclaredByName},
    {TSchemaFaultCode::OutOfOrder, OutOfOrder},
    {TSchemaFaultCode::WrongSequence, WrongSequence},
    {TSchemaFaultCode::OutsideElement, OutsideElement},
    {TSchemaFaultCode::MissingWrapper, MissingWrapper},
    {TSchemaFaultCode::ExclusiveElement, ExclusiveElement},
    {TSchemaFaultCode::MissingElement, MissingElement},
    {TSchemaFaultCode::MissingSeveral, MissingSeveral},
    {TSchemaFaultCode::MissingChoice, MissingChoice},
    {TSchemaFaultCode::TooMany, TooMany},
    {TSchemaFaultCode::TextNotAllowed, TextNotAllowed},
    {TSchemaFaultCode::ContentNotAllowed, ContentNotAllowed},
    {TSchemaFaultCode::ElementInSimpleType, ElementInSimpleType},
    {TSchemaFaultCode::UnknownAttribute, UnknownAttribute},
    {TSchemaFaultCode::MissingAttribute, MissingAttribute},
    {TSchemaFaultCode::UnknownType, UnknownType},
    {TSchemaFaultCode::TypeNotDerived, TypeNotDerived},
    {TSchemaFaultCode::NilNotAllowed, NilNotAllowed},
    {TSchemaFaultCode::NilWithContent, NilWithContent},
    {TSchemaFaultCode::DuplicateId, DuplicateId},
    {TSchemaFaultCode::EmptyValue, EmptyValue},
    {TSchemaFaultCode::SpaceAround, SpaceAround},
    {TSchemaFaultCode::NotInList, NotInList},
    {TSchemaFaultCode::TooLong, TooLong},
    {TSchemaFaultCode::TooShort, TooShort},
    {TSchemaFaultCode::WrongLength, WrongLength},
    {TSchemaFaultCode::TooManyDigits, TooManyDigits},
    {TSchemaFaultCode::TooManyDecimals, TooManyDecimals},
    {TSchemaFaultCode::BelowMinimum, BelowMinimum},
    {TSchemaFaultCode::WrongPattern, WrongPattern},
    {TSchemaFaultCode::NotDecimal, NotOfForm<kDecimal, kDecimalForm>},
    {TSchemaFaultCode::NotInteger, NotOfForm<kInteger, kIntegerForm>},
    {TSchemaFaultCode::NotBoolean, NotOfForm<kBoolean, kBooleanForm>},
    {TSchemaFaultCode::NotDate, NotOfForm<kDate, kDateForm>},
    {TSchemaFaultCode::NotTime, NotOfForm<kTime, kTimeForm>},
    {TSchemaFaultCode::NotDateTime, NotOfForm<kDateTime, kDateTimeForm>},
    {TSchemaFaultCode::NotBase64, NotOfForm<kBase64, kBase64Form>},
    {TSchemaFaultCode::NotUri, NotOfForm<kUri, kUriForm>},
    {TSchemaFaultCode::NotName, NotOfForm<kName, kNameForm>},
};

} // namespace

std::string TSchemaMessages::Sentence(const TSchemaFault& fault) {
    const auto* entry = std::find_if(std::begin(kCatalogue), std::end(kCatalogue),
                                     [&](const TEntry& candidate) { return candidate.Code == fault.Code; });
    assert(entry != std::end(kCatalogue));
    return entry->Sentence(fault);
}

} // namespace conferix
