#include "schema_model/element_history.h"

#include "schema_model/built_in_folders.h"

#include <algorithm>
#include <set>

namespace conferix {

namespace {

using TKind = TModelNode::TKind;

/// A child by its parent's entry and its name.
using TChild = std::pair<std::size_t, std::string_view>;
using TChildren = std::set<TChild>;

/// What of a document does not fit a version.
struct TMisfits {
    std::vector<bool> Unknown; ///< by entry: the version does not know the element
    TChildren Missing;         ///< demanded, and the document has it nowhere

    /// Number of those that the other version does not share.
    std::size_t CountWithout(const TMisfits& other) const {
        std::size_t count = 0;
        for (std::size_t i = 0; i < Unknown.size(); ++i)
            count += Unknown[i] && !other.Unknown[i] ? 1 : 0;
        for (const TChild& child : Missing)
            count += other.Missing.count(child) == 0 ? 1 : 0;
        return count;
    }
};

/// How many more misfits one has than the other; 0 where that says little.
std::size_t GainOf(const TMisfits& own, const TMisfits& other) {
    // One element too many or too few says little, and so does one for and one against.
    constexpr std::size_t kLeast = 2;
    constexpr std::size_t kTimes = 3;
    const std::size_t healed = own.CountWithout(other);
    const std::size_t caused = other.CountWithout(own);
    return healed < kLeast || healed <= caused || caused * kTimes > healed ? 0 : healed - caused;
}

template<class Visit>
void ForEachElementIn(const std::vector<TModelNode>& nodes, const Visit& visit) {
    for (const TModelNode& node : nodes) {
        if (node.Kind == TKind::Element)
            visit(node);
        ForEachElementIn(node.Children, visit);
    }
}

template<class Visit>
void ForEachElement(const TSchemaModel& model, const Visit& visit) {
    ForEachElementIn(model.Elements(), visit);
    for (const TModelComplexType& type : model.ComplexTypes())
        ForEachElementIn(type.Children, visit);
}

/// Looks for children by name, through groups and the types that a type goes on from.
class TSearch {
  public:
    TSearch(const TSchemaModel& model, std::string_view version) : model_(model), version_(version) {}

    /// The element at the end of a path from the root on, or null.
    const TModelNode* Path(std::span<const std::string_view> names) const {
        const TModelNode* node = names.empty() ? nullptr : Root(names.front());
        for (std::size_t i = 1; i < names.size() && node != nullptr; ++i)
            node = Child(*node, names[i]);
        return node;
    }

    /// What stands below an unknown element is unknown too. `top`: entry 0, null for one that is unknown.
    /// `present`: all of the document's.
    TMisfits Misfits(const TElementPaths& paths, const TModelNode* top, const TChildren& present) const {
        std::vector<const TModelNode*> nodes;
        TMisfits misfits;
        nodes.reserve(paths.Entries.size());
        misfits.Unknown.reserve(paths.Entries.size());
        for (std::size_t i = 0; i < paths.Entries.size(); ++i) {
            const auto& [parent, name] = paths.Entries[i];
            const TModelNode* above = i == 0 ? nullptr : nodes[parent];
            nodes.push_back(i == 0 ? top : above != nullptr ? Child(*above, name) : nullptr);
            misfits.Unknown.push_back(nodes.back() == nullptr);
            if (nodes.back() == nullptr)
                continue;
            for (const std::string_view demanded : Demanded(*nodes.back()))
                if (present.count({i, demanded}) == 0)
                    misfits.Missing.emplace(i, demanded);
        }
        return misfits;
    }

    const TModelNode* Root(std::string_view name) const {
        for (const TModelNode& element : model_.Elements())
            if (element.Name == name && element.Versions.Contains(version_))
                return &element;
        return nullptr;
    }

    /// True when some element of that name has a child of the other.
    bool AnyChild(std::string_view parent, std::string_view name) const {
        bool found = false;
        ForEachElement(model_, [&](const TModelNode& node) {
            found = found ||
                    (node.Name == parent && node.Versions.Contains(version_) && Child(node, name) != nullptr);
        });
        return found;
    }

    /// The child of an element; null when it has none of that name.
    const TModelNode* Child(const TModelNode& element, std::string_view name) const {
        if (const TModelTerm* type = TermIn(element.Types, version_))
            return InType(type->Text, name);
        if (const TModelNode* found = InNodes(element.Children, name))
            return found;
        const TModelTerm* base = TermIn(element.Bases, version_);
        return base != nullptr ? InType(base->Text, name) : nullptr;
    }

    /// True when the list of codes of an element's value has a code.
    bool HasCode(std::span<const std::string_view> path, std::string_view code) const {
        const TModelNode* node = Path(path);
        const TModelTerm* term = node != nullptr ? TermIn(node->Types, version_) : nullptr;
        const TModelSimpleType* type = term != nullptr ? model_.SimpleType(term->Text) : nullptr;
        while (type != nullptr && type->Codes.empty()) {
            const TModelTerm* base = TermIn(type->Bases, version_);
            type = base != nullptr ? model_.SimpleType(base->Text) : nullptr;
        }
        return type != nullptr && std::ranges::any_of(type->Codes, [&](const TModelTerm& listed) {
                   return listed.Text == code && listed.Versions.Contains(version_);
               });
    }

  private:
    const TModelNode* InType(const std::string& typeName, std::string_view name) const {
        const TModelComplexType* type = model_.ComplexType(typeName);
        while (type != nullptr) {
            if (const TModelNode* found = InNodes(type->Children, name))
                return found;
            const TModelTerm* base = TermIn(type->Bases, version_);
            type = base != nullptr ? model_.ComplexType(base->Text) : nullptr;
        }
        return nullptr;
    }

    /// Names of the children that an element must have, whatever else it has.
    std::vector<std::string_view> Demanded(const TModelNode& element) const {
        std::vector<std::string_view> names;
        if (const TModelTerm* type = TermIn(element.Types, version_)) {
            DemandedOfType(type->Text, names);
            return names;
        }
        DemandedOf(element.Children, names);
        if (const TModelTerm* base = TermIn(element.Bases, version_))
            DemandedOfType(base->Text, names);
        return names;
    }

    void DemandedOfType(const std::string& typeName, std::vector<std::string_view>& names) const {
        const TModelComplexType* type = model_.ComplexType(typeName);
        while (type != nullptr) {
            DemandedOf(type->Children, names);
            const TModelTerm* base = TermIn(type->Bases, version_);
            type = base != nullptr ? model_.ComplexType(base->Text) : nullptr;
        }
    }

    void DemandedOf(const std::vector<TModelNode>& nodes, std::vector<std::string_view>& names) const {
        for (const TModelNode& node : nodes) {
            if (!node.Versions.Contains(version_) || node.OccursIn(version_).Min == 0)
                continue;
            if (node.Kind == TKind::Element)
                names.push_back(node.Name);
            else if (node.Kind == TKind::Sequence || node.Kind == TKind::All)
                DemandedOf(node.Children, names);
        }
    }

    const TModelNode* InNodes(const std::vector<TModelNode>& nodes, std::string_view name) const {
        for (const TModelNode& node : nodes) {
            if (!node.Versions.Contains(version_))
                continue;
            if (node.Kind == TKind::Element && node.Name == name)
                return &node;
            if (const TModelNode* found =
                    node.Kind == TKind::Element ? nullptr : InNodes(node.Children, name))
                return found;
        }
        return nullptr;
    }

    const TSchemaModel& model_;
    std::string_view version_;
};

} // namespace

bool PathExists(const TSchemaModel& model, std::string_view version, std::span<const std::string_view> path) {
    return TSearch(model, version).Path(path) != nullptr;
}

TElementHistory::TElementHistory(std::vector<std::shared_ptr<const TSchemaModel>> models)
    : models_(std::move(models)) {
    for (const auto& model : models_)
        ForEachElement(*model, [this](const TModelNode& node) { names_.insert(node.Name); });
}

const TElementHistory& TElementHistory::BuiltIn() {
    static const TElementHistory history([] {
        std::error_code ignored;
        const std::filesystem::path folder = SchemaModelFolder();
        return std::filesystem::is_directory(folder, ignored)
                   ? LoadSchemaModels(folder)
                   : std::vector<std::shared_ptr<const TSchemaModel>>();
    }());
    return history;
}

std::vector<TElementHistory::TVersion> TElementHistory::Series(std::string_view fileName) const {
    std::vector<TVersion> series;
    std::string current;
    for (const auto& model : models_)
        for (const std::string& version : model->Versions())
            if (model->FileName(version) == fileName)
                current = version;
    if (current.empty())
        return series;
    for (const auto& model : models_)
        if (model->FileName(current) == fileName)
            for (const std::string& version : model->Versions())
                series.push_back({version, model.get(), model->IsApproximate(version)});
    std::sort(series.begin(), series.end(),
              [](const TVersion& left, const TVersion& right) { return left.Text < right.Text; });
    return series;
}

std::size_t TElementHistory::IndexOf(const std::vector<TVersion>& series, std::string_view fileName) {
    const auto found = std::find_if(series.begin(), series.end(), [&](const TVersion& version) {
        return version.Model->FileName(version.Text) == fileName;
    });
    return static_cast<std::size_t>(found - series.begin());
}

bool TElementHistory::Knows(std::string_view fileName, std::span<const std::string_view> path) const {
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    return current < series.size() && PathExists(*series[current].Model, series[current].Text, path);
}

TElementHistory::TSentence TElementHistory::Sentence(std::string_view fileName,
                                                     std::span<const std::string_view> path) const {
    if (path.empty() || names_.count(path.back()) == 0)
        return {};
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    std::vector<bool> exists;
    exists.reserve(series.size());
    for (const TVersion& version : series)
        exists.push_back(!version.Approximate && PathExists(*version.Model, version.Text, path));
    if (path.size() > 1 && std::find(exists.begin(), exists.end(), true) == exists.end())
        for (std::size_t at = 0; at < series.size(); ++at)
            exists[at] =
                !series[at].Approximate &&
                TSearch(*series[at].Model, series[at].Text).AnyChild(path[path.size() - 2], path.back());
    return ChangeSentence(series, current, exists);
}

TElementHistory::TSentence TElementHistory::CodeSentence(std::string_view fileName,
                                                         std::span<const std::string_view> path,
                                                         std::string_view code) const {
    const std::vector<TVersion> series = Series(fileName);
    std::vector<bool> exists;
    exists.reserve(series.size());
    for (const TVersion& version : series)
        exists.push_back(!version.Approximate && TSearch(*version.Model, version.Text).HasCode(path, code));
    return ChangeSentence(series, IndexOf(series, fileName), exists);
}

bool TElementHistory::NeighboursDisagree(std::string_view fileName, std::span<const std::string_view> path,
                                         bool onWhetherItIs) const {
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    if (current == series.size() || !series[current].Approximate)
        return false;
    const auto standing = [&](std::size_t at) { // 0 absent, 1 optional, 2 demanded
        const TModelNode* node = TSearch(*series[at].Model, series[at].Text).Path(path);
        return node == nullptr ? 0 : node->OccursIn(series[at].Text).Min == 0 ? 1 : 2;
    };
    std::size_t before = current;
    while (before > 0 && series[before].Approximate)
        --before;
    std::size_t after = current;
    while (after + 1 < series.size() && series[after].Approximate)
        ++after;
    if (series[before].Approximate || series[after].Approximate)
        return false;
    return onWhetherItIs ? (standing(before) == 0) != (standing(after) == 0)
                         : standing(before) != standing(after);
}

TElementHistory::TSentence TElementHistory::ChangeSentence(const std::vector<TVersion>& series,
                                                           std::size_t current,
                                                           const std::vector<bool>& exists) {
    const auto from = exists.begin() + static_cast<std::ptrdiff_t>(current);
    const bool before = std::find(exists.begin(), from, true) != from;
    const bool after = std::find(from, exists.end(), true) != exists.end();
    if (before == after || current == series.size() || exists[current])
        return {};
    // The first version of which the change may be, and the last.
    std::size_t first = current;
    std::size_t last = static_cast<std::size_t>(std::find(from, exists.end(), true) - exists.begin());
    if (after) {
        for (first = last; first > current + 1 && series[first - 1].Approximate; --first) {
        }
    } else {
        while (!exists[first - 1])
            --first;
        for (last = first; last < current && series[last].Approximate; ++last) {
        }
    }
    const std::string& oldest = series[first].Text;
    const std::string& newest = series[last].Text;
    const std::string what = after ? "só existe a partir " : "deixou de existir ";
    if (last == first)
        return {what + (after ? "da versão " : "na versão ") + oldest, before};
    if (last == first + 1)
        return {what + (after ? "da versão " : "na versão ") + oldest + " ou " + newest, before};
    return {what + (after ? "de uma versão" : "em uma versão") + " entre " + oldest + " e " + newest, before};
}

TElementHistory::TRelation TElementHistory::Relation(std::string_view fileName,
                                                     std::span<const std::string_view> parentPath,
                                                     std::string_view foundName,
                                                     std::string_view wantedName) const {
    if (names_.count(foundName) == 0)
        return TRelation::None;
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    if (current == series.size())
        return TRelation::None;
    const TModelNode* wanted = nullptr;
    const TModelNode* found = nullptr;
    const auto find = [&](const TVersion& version) {
        const TSearch search(*version.Model, version.Text);
        const TModelNode* parent = search.Path(parentPath);
        found = parent != nullptr ? search.Child(*parent, foundName) : nullptr;
        wanted = parent != nullptr ? search.Child(*parent, wantedName) : nullptr;
    };
    find(series[current]);
    const TModelTerm* type = wanted != nullptr ? TermIn(wanted->Types, series[current].Text) : nullptr;
    TRelation relation = TRelation::None;
    for (const TVersion& version : series) {
        find(version);
        if (found == nullptr || version.Approximate)
            continue;
        if (wanted != nullptr)
            return TRelation::Distinct;
        const TModelTerm* other = TermIn(found->Types, version.Text);
        if (type != nullptr && other != nullptr && type->Text == other->Text)
            relation = TRelation::Renamed;
    }
    return relation;
}

std::string TElementHistory::VersionOfContent(std::string_view fileName, const TElementPaths& paths,
                                              std::string_view named) const {
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    if (current == series.size() || paths.Entries.empty())
        return {};
    TChildren present;
    for (const auto& [parent, name] : paths.Entries)
        present.emplace(parent, name);
    const auto misfitsOf = [&](const TVersion& version) {
        const TSearch search(*version.Model, version.Text);
        return search.Misfits(paths, search.Root(paths.Entries.front().Name), present);
    };
    const TMisfits own = misfitsOf(series[current]);
    const auto distance = [current](std::size_t at) { return at > current ? at - current : current - at; };
    std::size_t best = current;
    std::size_t bestGain = 0;
    for (std::size_t at = 0; at < series.size(); ++at) {
        if (at == current || series[at].Approximate)
            continue;
        const TMisfits misfits = misfitsOf(series[at]);
        if (series[at].Text == named && own.CountWithout(misfits) > misfits.CountWithout(own))
            return series[at].Text;
        const std::size_t gain = GainOf(own, misfits);
        if (gain == 0 || gain < bestGain || (gain == bestGain && distance(at) >= distance(best)))
            continue;
        best = at;
        bestGain = gain;
    }
    return best != current ? series[best].Text : std::string();
}

std::optional<TElementHistory::TLayout> TElementHistory::LayoutOfContent(std::string_view fileName,
                                                                         const TElementPaths& paths,
                                                                         std::span<const THome> homes) const {
    const std::vector<TVersion> series = Series(fileName);
    const std::size_t current = IndexOf(series, fileName);
    if (current == series.size() || paths.Entries.empty() || homes.empty())
        return std::nullopt;
    TChildren present;
    for (const auto& [parent, name] : paths.Entries)
        present.emplace(parent, name);
    const auto children = [&](const std::vector<bool>& unknown) {
        std::size_t count = 0;
        for (std::size_t i = 1; i < unknown.size(); ++i)
            count += paths.Entries[i].Parent == 0 && unknown[i] ? 1 : 0;
        return count;
    };
    const std::size_t ownKind = homes.front().Kind;
    TMisfits own;
    for (const THome& home : homes) // the name may be wrong, and the kind right all the same
        if (const TSearch search(*series[current].Model, series[current].Text);
            own.Unknown.empty() && home.Kind == ownKind && search.Path(home.Path) != nullptr)
            own = search.Misfits(paths, search.Path(home.Path), present);
    if (own.Unknown.empty())
        return std::nullopt;
    // Some kinds share most of their children.
    constexpr std::size_t kForeign = 2;
    const bool mayBeOtherKind = children(std::vector<bool>(paths.Entries.size(), true)) > kForeign &&
                                children(own.Unknown) >= kForeign;
    std::optional<TLayout> best;
    std::size_t bestGain = 0;
    const auto rank = [&](std::size_t kind, std::size_t at) {
        return std::pair(kind != ownKind, at > current ? at - current : current - at);
    };
    std::pair<bool, std::size_t> bestRank;
    for (std::size_t at = 0; at < series.size(); ++at) {
        const TSearch search(*series[at].Model, series[at].Text);
        for (const THome& home : homes) {
            const TModelNode* top =
                !series[at].Approximate && (home.Kind == ownKind ? at != current : mayBeOtherKind)
                    ? search.Path(home.Path)
                    : nullptr;
            if (top == nullptr)
                continue;
            const TMisfits misfits = search.Misfits(paths, top, present);
            const std::size_t gain = GainOf(own, misfits);
            if (gain == 0 || gain < bestGain || (home.Kind != ownKind && children(misfits.Unknown) != 0) ||
                (gain == bestGain && rank(home.Kind, at) >= bestRank))
                continue;
            best = {series[at].Text, &home};
            bestGain = gain;
            bestRank = rank(home.Kind, at);
        }
    }
    return best;
}

} // namespace conferix
