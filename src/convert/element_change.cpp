#include "convert/element_change.h"

#include "platform/platform.h"
#include "schema_model/built_in_folders.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace conferix {

namespace {

using TKind = TModelNode::TKind;

const std::string& TypeName(const TModelNode& node, std::string_view versao) {
    static const std::string kNone;
    const TModelTerm* type = TermIn(node.Types, versao);
    return type != nullptr ? type->Text : kNone;
}

std::string_view LocalName(std::string_view name) {
    return name.substr(name.find(':') == std::string_view::npos ? 0 : name.find(':') + 1);
}

template<class Content>
auto FindChild(const Content& content, std::string_view name) {
    return std::find_if(content.begin(), content.end(),
                        [name](const auto& child) { return child.Name == name; });
}

/// The limits of a simple type in a version, those of its bases included.
struct TLimits {
    std::string BuiltIn; ///< the type of XML Schema that it rests on
    std::uint32_t MinLength = 0;
    std::uint32_t MaxLength = kModelUnbounded;
    std::uint32_t Digits = kModelUnbounded;
    std::uint32_t Decimals = kModelUnbounded;
    std::set<std::string> Others; ///< patterns and the like, as written
    std::optional<std::set<std::string>> Codes;
};

std::uint32_t NumberOf(std::string_view text, std::uint32_t byDefault) {
    std::uint32_t number = byDefault;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void AddLimit(TLimits& limits, const std::string& name, const std::string& value) {
    const std::size_t dots = value.find("..");
    if (name == "digitos") {
        limits.Digits = NumberOf(value, kModelUnbounded);
    } else if (name == "decimais") {
        limits.Decimals = NumberOf(value, kModelUnbounded);
    } else if (name == "tamanho" && dots == std::string::npos) {
        limits.MinLength = limits.MaxLength = NumberOf(value, 0);
    } else if (name == "tamanho") {
        limits.MinLength = NumberOf(std::string_view(value).substr(0, dots), 0);
        limits.MaxLength = NumberOf(std::string_view(value).substr(dots + 2), kModelUnbounded);
    } else {
        limits.Others.insert(name + "=" + value);
    }
}

TLimits LimitsOf(const TSchemaModel& model, std::string name, std::string_view versao) {
    TLimits limits;
    std::vector<const TModelSimpleType*> chain;
    while (const TModelSimpleType* type = model.SimpleType(name)) {
        chain.push_back(type);
        const TModelTerm* base = TermIn(type->Bases, versao);
        name = base != nullptr ? base->Text : std::string();
    }
    limits.BuiltIn = name;
    for (auto type = chain.rbegin(); type != chain.rend(); ++type) {
        for (const TModelLimit& limit : (*type)->Limits)
            if (limit.Value.Versions.Contains(versao))
                AddLimit(limits, limit.Name, limit.Value.Text);
        if ((*type)->Codes.empty())
            continue;
        limits.Codes.emplace();
        for (const TModelTerm& code : (*type)->Codes)
            if (code.Versions.Contains(versao))
                limits.Codes->insert(code.Text);
    }
    return limits;
}

bool Includes(const std::set<std::string>& all, const std::set<std::string>& some) {
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
}

} // namespace

const std::shared_ptr<const TSchemaModel>& MessageModel() {
    static const std::shared_ptr<const TSchemaModel> found = [] {
        const std::filesystem::path folder = SchemaModelFolder();
        for (const auto& model : LoadSchemaModels(folder)) {
            const bool messages =
                !model->Elements().empty() && model->Elements().front().Name == "mensagemTISS";
            if (messages && std::count(model->Versions().begin(), model->Versions().end(), "4.00.00") != 0)
                return model;
        }
        throw EInvalidSchemaModel(PathText(folder), 0, "falta o modelo das mensagens");
    }();
    return found;
}

TVersionChange::TVersionChange(std::shared_ptr<const TSchemaModel> modelo, std::string from, std::string to,
                               std::vector<std::string> messagePath)
    : modelo_(std::move(modelo)), from_(std::move(from)), to_(std::move(to)),
      messagePath_(std::move(messagePath)) {
    const TModelNode& root = modelo_->Elements().front();
    root_ = Compare(root, root);
}

TVersionChange::TContent TVersionChange::ContentOf(const TModelNode& element, std::string_view versao) const {
    TContent content;
    if (const std::string& type = TypeName(element, versao); !type.empty()) {
        AddType(content, type, versao);
    } else {
        if (const TModelTerm* base = TermIn(element.Bases, versao))
            AddType(content, base->Text, versao);
        AddNodes(content, element.Children, false, false, versao);
    }
    KeepMessage(content);
    return content;
}

void TVersionChange::KeepMessage(TContent& content) const {
    for (const std::string& step : messagePath_) {
        const auto found = FindChild(content, step);
        if (found == content.end())
            continue;
        const TModelNode* kept = found->Node;
        std::erase_if(content,
                      [kept](const TChild& other) { return other.Alternative && other.Node != kept; });
    }
}

void TVersionChange::AddType(TContent& content, const std::string& name, std::string_view versao) const {
    const TModelComplexType* type = modelo_->ComplexType(name);
    if (type == nullptr)
        return;
    if (const TModelTerm* base = TermIn(type->Bases, versao))
        AddType(content, base->Text, versao);
    AddNodes(content, type->Children, false, false, versao);
}

void TVersionChange::AddNodes(TContent& content, const std::vector<TModelNode>& nodes, bool optional,
                              bool alternative, std::string_view versao) const {
    for (const TModelNode& node : nodes) {
        if (!node.Versions.Contains(versao) || node.Kind == TKind::Attribute || node.Kind == TKind::Any)
            continue;
        const bool absent = optional || node.OccursIn(versao).Min == 0;
        if (node.Kind == TKind::Element || node.Kind == TKind::Reference)
            content.push_back({LocalName(node.Name), &node, absent, alternative});
        else
            AddNodes(content, node.Children, absent || node.Kind == TKind::Choice,
                     alternative || node.Kind == TKind::Choice, versao);
    }
}

const TElementChange* TVersionChange::Compare(const TModelNode& from, const TModelNode& to) {
    if (from.Kind == TKind::Reference || to.Kind == TKind::Reference)
        return nullptr;
    const std::pair types(TypeName(from, from_), TypeName(to, to_));
    const bool named = !types.first.empty() && !types.second.empty();
    if (named) {
        if (const auto known = byTypes_.find(types); known != byTypes_.end())
            return known->second;
    }
    TElementChange change = CompareContent(ContentOf(from, from_), ContentOf(to, to_));
    if (named)
        change.Value = CompareValue(types.first, types.second);
    const TElementChange* result = nullptr;
    if (!change.Nothing())
        result = &changes_.emplace_back(std::move(change));
    if (named)
        byTypes_.emplace(types, result);
    return result;
}

TElementChange TVersionChange::CompareContent(const TContent& from, const TContent& to) {
    TElementChange change;
    std::string_view kept; // the last child that both versions have
    std::size_t keptPlace = 0;
    for (std::size_t i = 0; i < from.size(); ++i) {
        const TChild& child = from[i];
        const auto same = FindChild(to, child.Name);
        if (same != to.end()) {
            const auto place = static_cast<std::size_t>(same - to.begin()) + 1;
            if (place <= keptPlace)
                throw EInvalidSchemaModel(modelo_->FileName(to_), child.Node->Line,
                                          std::string(child.Name) + " mudou de lugar desde a versão " +
                                              from_);
            kept = child.Name;
            keptPlace = place;
            if (const TElementChange* below = Compare(*child.Node, *same->Node))
                change.Children.push_back({std::string(child.Name), TChildChange::TWhat::Changed, {}, below});
            continue;
        }
        // What stands in the same place under another name, with the same type, was renamed.
        const auto next = kept.empty() ? to.begin() : FindChild(to, kept) + 1;
        const bool renamed = next != to.end() && FindChild(from, next->Name) == from.end() &&
                             next->Optional == child.Optional && !TypeName(*child.Node, from_).empty() &&
                             TypeName(*child.Node, from_) == TypeName(*next->Node, to_);
        if (renamed)
            change.Children.push_back({std::string(child.Name), TChildChange::TWhat::Renamed,
                                       std::string(next->Name), Compare(*child.Node, *next->Node)});
        else
            change.Children.push_back({std::string(child.Name), TChildChange::TWhat::Removed, {}, nullptr});
    }
    for (const TChild& child : to) {
        const auto before = FindChild(from, child.Name);
        const bool renamed =
            std::any_of(change.Children.begin(), change.Children.end(),
                        [&](const TChildChange& other) { return other.NewName == child.Name; });
        if (!child.Optional && !renamed && (before == from.end() || before->Optional))
            change.Demanded.push_back(Demand(child));
    }
    if (!change.Demanded.empty())
        for (const TChild& child : to)
            change.Order.emplace_back(child.Name);
    return change;
}

TDemandedChild TVersionChange::Demand(const TChild& child) const {
    constexpr std::size_t kMostCodes = 10;
    TDemandedChild demanded{std::string(child.Name), {}};
    const std::optional<std::set<std::string>> codes =
        LimitsOf(*modelo_, TypeName(*child.Node, to_), to_).Codes;
    if (codes && codes->size() <= kMostCodes)
        demanded.Codes.assign(codes->begin(), codes->end());
    return demanded;
}

std::optional<TValueChange> TVersionChange::CompareValue(const std::string& from,
                                                         const std::string& to) const {
    if (modelo_->SimpleType(from) == nullptr || modelo_->SimpleType(to) == nullptr || AcceptsAll(from, to))
        return std::nullopt;
    return TValueChange{from, to};
}

bool TVersionChange::AcceptsAll(const std::string& from, const std::string& to) const {
    const TLimits before = LimitsOf(*modelo_, from, from_);
    const TLimits after = LimitsOf(*modelo_, to, to_);
    if (after.Codes)
        return before.Codes && Includes(*after.Codes, *before.Codes);
    return before.BuiltIn == after.BuiltIn && after.MinLength <= before.MinLength &&
           after.MaxLength >= before.MaxLength && after.Digits >= before.Digits &&
           after.Decimals >= before.Decimals && Includes(before.Others, after.Others);
}

} // namespace conferix
