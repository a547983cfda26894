#pragma once

#include "schema_model/schema_model.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// True when, in a version, elements of these local names stand in one another, from the root on.
bool PathExists(const TSchemaModel& model, std::string_view version, std::span<const std::string_view> path);

/// The distinct paths of the elements of a document, as a tree: entry 0 is the root, and a parent stands
/// before its children.
struct TElementPaths {
    struct TEntry {
        std::size_t Parent; ///< index of the parent; of the root its own
        std::string_view Name;
    };
    std::vector<TEntry> Entries;
};

/// In which versions of a kind of document elements exist. `fileName` is always the name of the XSD file of
/// the document's version. What only an approximated version says is never told as a fact.
class TElementHistory {
  public:
    explicit TElementHistory(std::vector<std::shared_ptr<const TSchemaModel>> models);

    /// The one of the model files that come with the program; empty when they are not there.
    static const TElementHistory& BuiltIn();

    /// True for an element that the file's own version has at a path.
    bool Knows(std::string_view fileName, std::span<const std::string_view> path) const;

    /// What happened to an element that a version's schema does not know: "só existe a partir da versão
    /// 4.00.00" or "deixou de existir na versão 4.00.00"; where unpublished versions lie between, "1.05.00 ou
    /// 1.06.00" or "entre 1.04.00 e 1.06.00". Empty when no version knows it, or both earlier and later ones.
    /// Where no version has the path, what counts is the element in a parent of that name.
    struct TSentence {
        std::string Text;
        bool Removed = false; ///< it is of earlier versions
    };
    TSentence Sentence(std::string_view fileName, std::span<const std::string_view> path) const;

    /// The same of a code that the list of a version's element has no more, or not yet.
    TSentence CodeSentence(std::string_view fileName, std::span<const std::string_view> path,
                           std::string_view code) const;

    /// True where the published versions next to an approximated one disagree on an element: only one of them
    /// has it, or demands it, so that what this version has is not known. `onWhetherItIs`: only on the
    /// former.
    bool NeighboursDisagree(std::string_view fileName, std::span<const std::string_view> path,
                            bool onWhetherItIs) const;

    /// How an unknown element relates to one that may stand in the same parent.
    enum class TRelation : std::uint8_t {
        None,
        Renamed, ///< another version has the one where this version has the other, with the same type
        Distinct ///< another version has both
    };
    TRelation Relation(std::string_view fileName, std::span<const std::string_view> parentPath,
                       std::string_view foundName, std::string_view wantedName) const;

    /// The version that the elements of a document fit much better than its own, nearest first; empty when
    /// there is none. `named`: a version that the document names elsewhere, which needs less evidence.
    std::string VersionOfContent(std::string_view fileName, const TElementPaths& paths,
                                 std::string_view named) const;

    /// Where an element of some kind stands in some versions: the path to it, from the root on.
    struct THome {
        std::size_t Kind;
        std::vector<std::string_view> Path;
    };
    struct TLayout {
        std::string Version;
        const THome* Home;
    };
    /// The layout that an element and what is in it fit much better than its own: the own kind before others,
    /// then the nearest version; nothing when there is none. `homes`: of all kinds; the first is that of the
    /// element. Another kind has to know all children of the element, and the own one to lack some.
    std::optional<TLayout> LayoutOfContent(std::string_view fileName, const TElementPaths& paths,
                                           std::span<const THome> homes) const;

  private:
    struct TVersion {
        std::string Text;
        const TSchemaModel* Model;
        bool Approximate;
    };
    /// The versions of one kind of document, oldest first.
    std::vector<TVersion> Series(std::string_view fileName) const;
    /// When something came or went, by the versions of a series that have it.
    static TSentence ChangeSentence(const std::vector<TVersion>& series, std::size_t current,
                                    const std::vector<bool>& exists);
    /// Index of a file's version in its series; the size of the series when it has none.
    static std::size_t IndexOf(const std::vector<TVersion>& series, std::string_view fileName);

    std::vector<std::shared_ptr<const TSchemaModel>> models_;
    std::set<std::string, std::less<>> names_; ///< of all elements
};

} // namespace conferix
