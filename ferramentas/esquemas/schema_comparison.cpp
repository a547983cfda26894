#include "schema_comparison.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

namespace conferix {

namespace {

template<class T>
std::string Text(const std::optional<T>& value) {
    if (!value)
        return "-";
    if constexpr (std::is_same_v<T, std::string>)
        return *value;
    else
        return std::to_string(*value);
}

std::string Text(bool value) {
    return value ? "sim" : "não";
}

std::string Text(std::uint32_t value) {
    return value == kSchemaUnbounded ? "*" : std::to_string(value);
}

std::string Joined(const std::set<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : " ") + text;
    return result;
}

/// The codes that only the first list holds.
std::string OnlyIn(const std::vector<std::string>& list, const std::vector<std::string>& other) {
    std::set<std::string> rest(list.begin(), list.end());
    for (const std::string& code : other)
        rest.erase(code);
    return Joined(rest);
}

class TComparison {
  public:
    TComparison(const TSchemaSet& published, const TSchemaSet& generated) : a_(published), b_(generated) {}

    std::vector<TSchemaDifference> Run() {
        Globals();
        while (!pending_.empty()) {
            const auto [path, types] = pending_.front();
            pending_.pop_front();
            Compare(path, *types.first, *types.second);
        }
        HiddenTypes();
        return std::move(found_);
    }

  private:
    void Differ(const std::string& path, const std::string& what, const std::string& a,
                const std::string& b) {
        if (a != b)
            found_.push_back({path + ": " + what, a, b});
    }

    std::string Name(const TSchemaSet& set, std::uint32_t space, const std::string& name) const {
        return name.empty() ? "" : "{" + set.NamespaceUri(space) + "}" + name;
    }

    void Globals() {
        std::set<std::string> a, b;
        for (const TSchemaElement* element : a_.GlobalElements())
            a.insert(Name(a_, element->Namespace, element->Name));
        for (const TSchemaElement* element : b_.GlobalElements()) {
            b.insert(Name(b_, element->Namespace, element->Name));
            const std::uint32_t symbol =
                a_.SymbolOf(a_.NamespaceId(b_.NamespaceUri(element->Namespace)), element->Name);
            if (const TSchemaElement* same = a_.GlobalElement(symbol))
                Compare(element->Name, *same, *element);
        }
        Differ("", "elementos globais", Joined(a), Joined(b));
    }

    void Compare(const std::string& path, const TSchemaElement& a, const TSchemaElement& b) {
        Differ(path, "nome", Name(a_, a.Namespace, a.Name), Name(b_, b.Namespace, b.Name));
        Differ(path, "nulo", Text(a.Nillable), Text(b.Nillable));
        Differ(path, "conteúdo simples", Text(a.SimpleType != nullptr), Text(b.SimpleType != nullptr));
        if (a.SimpleType != nullptr && b.SimpleType != nullptr)
            Compare(path, *a.SimpleType, *b.SimpleType);
        else if (a.ComplexType != nullptr && b.ComplexType != nullptr)
            Enqueue(path, *a.ComplexType, *b.ComplexType);
    }

    void Enqueue(const std::string& path, const TSchemaComplexType& a, const TSchemaComplexType& b) {
        if (seen_.insert({&a, &b}).second)
            pending_.push_back({path, {&a, &b}});
    }

    std::string Ancestry(const TSchemaSet& set, const TSchemaSimpleType* type) const {
        std::string text;
        for (; type != nullptr; type = type->Base)
            text += Name(set, type->Namespace, type->Name) + ";";
        return text;
    }

    void Compare(const std::string& path, const TSchemaSimpleType& a, const TSchemaSimpleType& b) {
        if (!seenSimple_.insert({&a, &b}).second)
            return;
        const std::string at = path + " (" + b.Name + ")";
        Differ(at, "tipo", Ancestry(a_, &a), Ancestry(b_, &b));
        Differ(at, "espécie", std::to_string(static_cast<int>(a.Kind)),
               std::to_string(static_cast<int>(b.Kind)));
        const TSchemaFacets& x = a.Facets;
        const TSchemaFacets& y = b.Facets;
        Differ(at, "length", Text(x.Length), Text(y.Length));
        Differ(at, "minLength", Text(x.MinLength), Text(y.MinLength));
        Differ(at, "maxLength", Text(x.MaxLength), Text(y.MaxLength));
        Differ(at, "totalDigits", Text(x.TotalDigits), Text(y.TotalDigits));
        Differ(at, "fractionDigits", Text(x.FractionDigits), Text(y.FractionDigits));
        Differ(at, "minInclusive", Text(x.MinInclusive), Text(y.MinInclusive));
        std::string left, right;
        for (const TSchemaPattern& pattern : x.Patterns)
            left += pattern.Text + "\n";
        for (const TSchemaPattern& pattern : y.Patterns)
            right += pattern.Text + "\n";
        Differ(at, "pattern", left, right);
        Differ(at, "códigos", OnlyIn(x.Codes, y.Codes), OnlyIn(y.Codes, x.Codes));
        Differ(at, "tem lista", Text(!x.Codes.empty()), Text(!y.Codes.empty()));
    }

    std::string Ancestry(const TSchemaSet& set, const TSchemaComplexType* type) const {
        std::string text;
        for (; type != nullptr; type = type->BaseComplex)
            text += Name(set, type->Namespace, type->Name) + ";";
        return text;
    }

    static std::string Wildcard(const TSchemaSet& set, const TSchemaWildcard& wildcard) {
        return std::string(wildcard.Lax ? "livre" : "estrito") +
               (wildcard.OtherTo ? " fora de " + set.NamespaceUri(*wildcard.OtherTo) : std::string());
    }

    void Compare(const std::string& path, const TSchemaComplexType& a, const TSchemaComplexType& b) {
        for (const TSchemaComplexType* type = &a; type != nullptr; type = type->BaseComplex)
            reached_.insert(type);
        Differ(path, "tipo", Ancestry(a_, &a), Ancestry(b_, &b));
        Differ(path, "conteúdo", std::to_string(static_cast<int>(a.Content)),
               std::to_string(static_cast<int>(b.Content)));
        if (a.SimpleContent != nullptr && b.SimpleContent != nullptr)
            Compare(path, *a.SimpleContent, *b.SimpleContent);
        Attributes(path, a, b);
        Automata(path, a.Automaton, b.Automaton);
    }

    void Attributes(const std::string& path, const TSchemaComplexType& a, const TSchemaComplexType& b) {
        std::set<std::string> left, right;
        const auto text = [](const TSchemaAttribute& attribute) {
            return attribute.Name + (attribute.Required ? "!" : "?");
        };
        for (const TSchemaAttribute& attribute : a.Attributes)
            left.insert(text(attribute));
        for (const TSchemaAttribute& attribute : b.Attributes) {
            right.insert(text(attribute));
            for (const TSchemaAttribute& same : a.Attributes)
                if (same.Name == attribute.Name)
                    Compare(path + "/@" + attribute.Name, *same.Type, *attribute.Type);
        }
        Differ(path, "atributos", Joined(left), Joined(right));
    }

    std::string Position(const TSchemaSet& set, const TSchemaPosition& position) const {
        const std::string name = position.Element != nullptr
                                     ? Name(set, position.Element->Namespace, position.Element->Name)
                                     : "qualquer " + Wildcard(set, *position.Wildcard);
        return name + " " + (position.Required ? "1.." : "0..") + Text(position.Max);
    }

    /// Positions by their place, with what may follow and whether the content may end there.
    std::string State(const TSchemaAutomaton& automaton, std::uint32_t state) const {
        std::string text = automaton.Accepting[state] != 0 ? "fim" : "";
        for (const std::uint32_t target : automaton.Follow(state))
            text += " " + std::to_string(target);
        return text;
    }

    void Automata(const std::string& path, const TSchemaAutomaton& a, const TSchemaAutomaton& b) {
        std::string left, right;
        for (const TSchemaPosition& position : a.Positions)
            left += Position(a_, position) + "; ";
        for (const TSchemaPosition& position : b.Positions)
            right += Position(b_, position) + "; ";
        Differ(path, "filhos", left, right);
        Differ(path, "all", Text(a.IsAll), Text(b.IsAll));
        if (left != right)
            return;
        Differ(path, "estados", std::to_string(a.Accepting.size()), std::to_string(b.Accepting.size()));
        if (!a.IsAll && a.Accepting.size() == b.Accepting.size() && !a.EdgeStart.empty() &&
            !b.EdgeStart.empty())
            for (std::uint32_t state = 0; state < a.Accepting.size(); ++state)
                Differ(path, "depois da posição " + std::to_string(state), State(a, state), State(b, state));
        for (std::size_t i = 0; i < a.Positions.size(); ++i)
            if (a.Positions[i].Element != nullptr)
                Compare(path + "/" + a.Positions[i].Element->Name, *a.Positions[i].Element,
                        *b.Positions[i].Element);
    }

    /// Named types that a document could only ask for by xsi:type.
    void HiddenTypes() {
        for (const auto& type : a_.ComplexTypes()) {
            if (type->Name.empty() || reached_.contains(type.get()) || type->BaseComplex == nullptr ||
                type->BaseComplex == &a_.AnyType() || !reached_.contains(type->BaseComplex))
                continue;
            const std::uint32_t space = b_.NamespaceId(a_.NamespaceUri(type->Namespace));
            if (b_.FindComplexType(space, type->Name) == nullptr)
                found_.push_back({"", "tipo derivado " + type->Name, "-"});
        }
    }

    const TSchemaSet& a_;
    const TSchemaSet& b_;
    std::vector<TSchemaDifference> found_;
    std::deque<std::pair<std::string, std::pair<const TSchemaComplexType*, const TSchemaComplexType*>>>
        pending_;
    std::set<std::pair<const TSchemaComplexType*, const TSchemaComplexType*>> seen_;
    std::set<std::pair<const TSchemaSimpleType*, const TSchemaSimpleType*>> seenSimple_;
    std::set<const TSchemaComplexType*> reached_;
};

} // namespace

std::vector<TSchemaDifference> CompareSchemas(const TSchemaSet& published, const TSchemaSet& generated) {
    return TComparison(published, generated).Run();
}

} // namespace conferix
