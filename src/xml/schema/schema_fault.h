#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

class TXmlAttribute;
class TXmlNode;
struct TSchemaComplexType;
struct TSchemaSimpleType;

/// What can be wrong with a document, structure first, then values.
enum class TSchemaFaultCode : std::uint8_t {
    UnknownRoot,
    UndeclaredPrefix,
    UnknownElement,
    WrongCase,        ///< the parent knows the name in other upper and lower case letters
    WrongNamespace,   ///< the parent knows the name in another namespace
    Misspelled,       ///< the parent knows a name that looks like it
    RenamedElement,   ///< the name is that of another version of the schema
    UndeclaredByName, ///< a strict wildcard admits the namespace, but no schema declares the element
    OutOfOrder,
    WrongSequence,    ///< many children are out of order
    OutsideElement,   ///< it belongs in an element that stands beside it
    MissingWrapper,   ///< children stand without the element that should be around them
    ExclusiveElement, ///< excludes, or is excluded by, another element that is there
    MissingElement,
    MissingSeveral, ///< several elements are missing at one place
    MissingChoice,  ///< one of several elements is missing
    TooMany,
    TextNotAllowed,
    ContentNotAllowed,   ///< an element that has to be empty is not
    ElementInSimpleType, ///< an element inside one that holds only a value
    UnknownAttribute,
    MissingAttribute,
    UnknownType,    ///< xsi:type names no type
    TypeNotDerived, ///< xsi:type names a type that does not derive from the declared one
    NilNotAllowed,
    NilWithContent,
    DuplicateId,
    EmptyValue,
    SpaceAround, ///< the value is right but for white space before or after it
    NotInList,
    TooLong,
    TooShort,
    WrongLength,
    TooManyDigits,
    TooManyDecimals,
    BelowMinimum,
    WrongPattern,
    NotDecimal,
    NotInteger,
    NotBoolean,
    NotDate,
    NotTime,
    NotDateTime,
    NotBase64,
    NotUri,
    NotName,
};

/// What would mend the structure, where nothing else can have been meant.
enum class TSchemaRemedy : std::uint8_t {
    None,
    Rename,   ///< the node gets the name, or the namespace, that is demanded
    Place,    ///< it goes to its place among its siblings
    Sort,     ///< so do all children of its parent
    Wrap,     ///< a new element goes around it and the siblings after it
    MoveInto, ///< it goes into another element
    MoveOut,  ///< it goes to its parent's parent
    Unwrap,   ///< its children take its place
    Remove    ///< it, or the element around it, is empty and may be absent
};

/// One fault of a document. Names are local names. Which of the fields are filled depends on the code;
/// TSchemaMessages makes the sentence of them.
struct TSchemaFault {
    TSchemaFaultCode Code = TSchemaFaultCode::UnknownRoot;
    const TXmlNode* Node =
        nullptr; ///< for a missing element, the sibling before which it belongs or the parent
    const TXmlAttribute* Attribute = nullptr; ///< null when the fault is one of an element
    std::int32_t Line = 0;                    ///< of the node's start tag or of stray text, 1-based
    std::int32_t LinePos = 0;                 ///< 1-based, in characters
    std::int32_t FilePos = 0;                 ///< 0-based, in characters
    std::string Name;                         ///< the element or attribute at fault
    std::string Parent;                       ///< the element in which it stands
    std::string Found;                        ///< value, prefix or namespace found
    std::string Before;                       ///< the sibling before which it belongs; empty: at the end
    std::string Bound;                        ///< bound, pattern, name or value demanded
    std::string Namespace;                    ///< of the name demanded, where it is another one
    std::vector<std::string> Expected;        ///< elements or codes expected; of codes, the first ten
    std::vector<std::string> Similar;         ///< codes like the value found, the nearest first
    std::int64_t Count = 0; ///< occurrences, length or digits found; size of the list of codes
    std::int64_t Limit = 0; ///< occurrences, length or digits allowed
    TSchemaRemedy Remedy = TSchemaRemedy::None;
    /// The content in which the node has to find its place, as long as the schema set; null to leave it
    /// there.
    const TSchemaComplexType* Content = nullptr;
    /// The element into which, or of which, it has to go; the empty one around it that can go instead of it.
    const TXmlNode* Other = nullptr;
    const TSchemaSimpleType* Type = nullptr; ///< of a value, as long as the schema set
    bool Optional = false;                   ///< of an empty element: it may be absent

    /// The piece of XML or the value that the fault is about, trimmed and short. The document must live.
    std::string SrcText() const;
    /// A number that faults of one cause share: of one kind at one element, where a code is at fault of one
    /// code; never 0.
    std::uint64_t GroupKey() const;
};

/// The faults of one cause that are not kept.
struct TSchemaFurther {
    TSchemaFault First;                 ///< the first of the document
    std::vector<const TXmlNode*> Nodes; ///< of all of them
    bool SameValue = true;              ///< false where they differ in the value found
    bool SamePlace = true;              ///< false where they differ in the element before which they belong
};

/// The faults of a document as they are found, which is nearly in the order of their places. Of more than are
/// asked for, the first of the document stay and of the others the cause and the place.
class TSchemaFaultList {
  public:
    static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

    explicit TSchemaFaultList(std::size_t limit) : limit_(limit) {}

    /// The added fault stays in its place until the next one is added.
    TSchemaFault& Add(TSchemaFault fault);
    /// The latest faults, as many as are asked for, in the order in which they were found; one that is better
    /// explained by another may be taken out again.
    std::deque<TSchemaFault>& Latest() { return latest_; }
    /// The first faults in the order of their places, and those that there were beside them.
    std::pair<std::vector<TSchemaFault>, std::vector<TSchemaFurther>> Take();

  private:
    void KeepFirst();
    void LeaveOut(TSchemaFault fault);

    std::size_t limit_;
    std::deque<TSchemaFault> latest_;
    std::vector<TSchemaFault> earlier_; ///< the first ones among those before the latest
    std::int32_t firstLeftOut_ =
        std::numeric_limits<std::int32_t>::max();     ///< place from which on none is kept
    std::map<std::uint64_t, TSchemaFurther> further_; ///< by cause
};

} // namespace conferix
