#include "convert/tree_converter.h"

#include "platform/platform.h"
#include "schema_model/built_in_folders.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/xml_document.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace conferix {

namespace {

using TNote = TConversionNoteType;

/// The qualified name of a new element beside others of a parent.
std::string Qualified(const TXmlNode& parent, std::string_view name) {
    return parent.Prefix().empty() ? std::string(name) : fmt::format("{}:{}", parent.Prefix(), name);
}

/// The child before which one of that name belongs; null for the end.
TXmlNode* PlaceOf(TXmlNode& parent, std::string_view name, const std::vector<std::string>& order) {
    const auto own = std::find(order.begin(), order.end(), name);
    for (TXmlNode& child : parent.ChildTags())
        if (const auto other = std::find(order.begin(), order.end(), child.LocalName());
            other != order.end() && other > own)
            return &child;
    return nullptr;
}

/// What the schema says of a value, in the words of a validation.
std::string ValueSentence(const TXmlNode& element, const TSchemaSimpleType& type,
                          const TSchemaValueFault& found, std::string_view value) {
    constexpr std::size_t kCodesShown = 10;
    TSchemaFault fault;
    fault.Code = found.Code;
    fault.Node = &element;
    fault.Name = element.LocalName();
    fault.Parent = element.Parent()->LocalName();
    fault.Found = value;
    fault.Bound = found.Bound;
    fault.Count = found.Count;
    fault.Limit = found.Limit;
    if (found.Code == TSchemaFaultCode::NotInList) {
        const std::vector<std::string>& codes = type.Facets.Codes;
        fault.Count = static_cast<std::int64_t>(codes.size());
        fault.Expected.assign(
            codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(std::min(kCodesShown, codes.size())));
    }
    return TSchemaMessages::Sentence(fault);
}

/// A code that differs by a leading zero alone; empty when the type has none.
std::string SameCode(const std::string& value, const TSchemaSimpleType& type) {
    if (type.Facets.Codes.empty())
        return {};
    const std::string other = value.starts_with('0') ? value.substr(1) : "0" + value;
    return !other.empty() && !type.Check(other) ? other : std::string();
}

} // namespace

void RemoveElement(TXmlNode& element) {
    TXmlNode* parent = element.Parent();
    element.Remove();
    if (parent == nullptr || parent->FirstChildTag() != nullptr)
        return;
    const std::string text = parent->TextWithCData();
    parent->SetValue(TrimXmlSpace(text).empty() ? std::string_view() : text);
}

TTreeConverter::TTreeConverter(const TVersionChange& change, TConversionRun& run, TFillValue fill)
    : change_(change), run_(run), fill_(std::move(fill)) {}

void TTreeConverter::Convert(TXmlNode& root) {
    if (change_.Root() != nullptr && root.LocalName() == change_.Modelo().Elements().front().Name)
        Apply(root, *change_.Root());
}

// Goes down by calls along known elements alone, and so no deeper than the schemas are.
void TTreeConverter::Apply(TXmlNode& element, const TElementChange& change) {
    if (change.Value)
        CheckValue(element, *change.Value);
    Demand(element, change);
    for (TXmlNode* child = element.FirstChildTag(); child != nullptr;) {
        TXmlNode& node = *child;
        child = node.NextSiblingTag();
        const auto found =
            std::find_if(change.Children.begin(), change.Children.end(),
                         [&](const TChildChange& other) { return other.Name == node.LocalName(); });
        if (found == change.Children.end())
            continue;
        if (found->What == TChildChange::TWhat::Removed) {
            Remove(node);
            continue;
        }
        if (found->What == TChildChange::TWhat::Renamed) {
            run_.Add(TNote::ntChange, node,
                     fmt::format("<{}> passa a ser <{}>.", found->Name, found->NewName));
            node.SetName(Qualified(element, found->NewName));
        }
        if (found->Change != nullptr)
            Apply(node, *found->Change);
    }
}

void TTreeConverter::Demand(TXmlNode& parent, const TElementChange& change) {
    for (const TDemandedChild& demanded : change.Demanded) {
        if (parent.Child(demanded.Name) != nullptr)
            continue;
        if (const std::optional<TFilledValue> value = fill_(parent, demanded.Name)) {
            TXmlNode* child = parent.Document().NewTag(Qualified(parent, demanded.Name), value->Value);
            parent.InsertChild(*child, PlaceOf(parent, demanded.Name, change.Order));
            run_.Add(TNote::ntChange, *child, value->Text);
            continue;
        }
        std::string text =
            fmt::format("Informe <{}>, obrigatório a partir da versão {}", demanded.Name, change_.To());
        if (!demanded.Codes.empty())
            text += fmt::format(" ({})", fmt::join(demanded.Codes, ", "));
        run_.AddBelow(TNote::ntPending, parent, demanded.Name, {}, text + ".");
    }
}

void TTreeConverter::Remove(TXmlNode& element) {
    run_.AddLosses(
        element,
        fmt::format("<{}> não existe na versão {} e foi retirado.", element.LocalName(), change_.To()), true);
    RemoveElement(element);
}

const TSchemaSimpleType& TTreeConverter::TypeOf(const std::string& name, const std::string& versao,
                                                std::shared_ptr<const TSchemaSet>& schemas) const {
    const TSchemaModel& model = change_.Modelo();
    if (schemas == nullptr)
        schemas = TSchemaSet::Load(BuiltInSchemaFolder() / PathFromText(model.FileName(versao)));
    const TSchemaSimpleType* type =
        schemas->FindSimpleType(schemas->NamespaceId(model.TargetNamespace()), name);
    if (type == nullptr)
        throw ESchemaInvalido(PathText(schemas->MainFile()), 0, fmt::format("falta o tipo {}", name));
    return *type;
}

void TTreeConverter::CheckValue(TXmlNode& element, const TValueChange& change) {
    if (element.FirstChildTag() != nullptr)
        return;
    const std::string value = element.TextWithCData();
    const TSchemaSimpleType& type = TypeOf(change.To, change_.To(), after_);
    const std::optional<TSchemaValueFault> fault = type.Check(value);
    // What was wrong before is no matter of the conversion; the check of the whole file tells it.
    if (!fault || TypeOf(change.From, change_.From(), before_).Check(value))
        return;
    const std::string same = SameCode(value, type);
    if (same.empty()) {
        run_.Add(TNote::ntPending, element, value, ValueSentence(element, type, *fault, value));
        return;
    }
    element.SetValue(same);
    run_.Add(TNote::ntChange, element, value, fmt::format("O código passa a ser \"{}\".", same));
}

} // namespace conferix
