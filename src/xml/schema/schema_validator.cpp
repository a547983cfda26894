#include "xml/schema/schema_validator.h"

#include "xml/schema/schema_files.h"
#include "xml/schema/schema_likeness.h"
#include "xml/schema/schema_recovery.h"
#include "xml/schema/schema_scope.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>

namespace conferix {

namespace {

constexpr std::size_t kCodesShown = 10;
constexpr std::size_t kLikelyKept = 1000;

/// An element whose children are being walked.
struct TFrame {
    const TXmlNode* Node = nullptr;
    const TXmlNode* Next = nullptr;           ///< the child at which the walk goes on
    const TSchemaComplexType* Type = nullptr; ///< null: the content is not judged
    std::uint32_t State = 0;                  ///< of the type's automaton
    std::uint32_t Count = 0;                  ///< occurrences of the position that the state stands after
    std::uint64_t Seen = 0;                   ///< positions met, of an xs:all
    std::uint32_t ChildIndex = 0;             ///< of the next child element
    bool Explained = false;       ///< its content does not fit; decisions_ tells how children are judged
    bool ContentReported = false; ///< content where none may stand was reported
    std::optional<bool>
        HoldsNothing; ///< no value and no attribute, down to the last element; unknown at first
    /// A namespace in which the element stands by mistake, so that its children may too.
    std::optional<std::uint32_t> Forgiven;
    std::optional<TSchemaScopes::TMark> Mark;
};

/// The type that governs an element: one of the two.
struct TGoverning {
    const TSchemaSimpleType* Simple = nullptr;
    const TSchemaComplexType* Complex = nullptr;
};

bool IsBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsXmlSpace);
}

class TValidation {
  public:
    TValidation(const TSchemaSet& set, const ISchemaOtherVersions* others, const TXmlDocument& document,
                std::size_t limit)
        : set_(set), document_(document), scopes_(set, document.NameCount()), recovery_(set, others),
          faults_(limit) {}

    TSchemaVerdict Run() {
        if (const TXmlNode* root = document_.Element())
            VisitRoot(*root);
        while (!frames_.empty())
            Advance();
        auto [faults, further] = faults_.Take();
        return {std::move(faults), std::move(further)};
    }

  private:
    // ---- walking

    void VisitRoot(const TXmlNode& root) {
        const auto mark = scopes_.Enter(root);
        const TSchemaName name = NameOf(root);
        if (const TSchemaElement* element = set_.GlobalElement(name.Symbol)) {
            Judge(root, element, {element->SimpleType, element->ComplexType}, mark);
            return;
        }
        const TSchemaElement* meant =
            set_.GlobalElement(set_.SymbolOf(set_.NamespaceId(set_.TargetNamespace()), root.LocalName()));
        if (!name.Undeclared)
            ReportRoot(root, name);
        if (meant == nullptr || meant->ComplexType == nullptr)
            return LeaveOut(root, mark);
        Judge(root, meant, {nullptr, meant->ComplexType}, mark);
        if (!frames_.empty())
            frames_.back().Forgiven = name.Namespace;
    }

    void ReportRoot(const TXmlNode& root, const TSchemaName& name) {
        const std::uint32_t target = set_.NamespaceId(set_.TargetNamespace());
        const bool known = set_.GlobalElement(set_.SymbolOf(target, root.LocalName())) != nullptr;
        const bool elsewhere = known && name.Namespace != target;
        TSchemaFault& fault =
            Add(elsewhere ? TSchemaFaultCode::WrongNamespace : TSchemaFaultCode::UnknownRoot, root);
        if (elsewhere) {
            fault.Bound = set_.TargetNamespace();
            fault.Found = NamespaceOf(root);
        }
        for (const TSchemaElement* element : set_.GlobalElements())
            if (element->Namespace == target)
                fault.Expected.push_back(element->Name);
    }

    void Advance() {
        TFrame& frame = frames_.back();
        const TXmlNode* child = frame.Next;
        if (child == nullptr) {
            Finish(frame);
            scopes_.Leave(frame.Mark);
            frames_.pop_back();
            return;
        }
        frame.Next = child->NextSibling();
        if (child->IsTag())
            VisitChild(frame, *child);
        else if (child->Kind() == TXmlNodeKind::xnText || child->Kind() == TXmlNodeKind::xnCData)
            JudgeText(frame, *child, child->Value());
    }

    void VisitChild(TFrame& frame, const TXmlNode& child) {
        auto mark = scopes_.Enter(child);
        const TSchemaName name = NameOf(child);
        if (frame.Type == nullptr)
            return LeaveOut(child, mark);
        if (frame.Type->Content == TSchemaContent::Empty) {
            ReportContent(frame);
            return LeaveOut(child, mark);
        }
        const TSchemaDecision decision = Decide(frame, name, child, mark);
        ++frame.ChildIndex;
        const std::size_t depth = frames_.size();
        if (decision.Element != nullptr) {
            Judge(child, decision.Element, {decision.Element->SimpleType, decision.Element->ComplexType},
                  mark);
            const bool elsewhere = !name.Undeclared && decision.Element->Namespace != name.Namespace;
            if (elsewhere && frames_.size() > depth)
                frames_.back().Forgiven = name.Namespace;
        } else if (decision.Wildcard != nullptr) {
            JudgeFree(child, name, *decision.Wildcard, mark);
        } else {
            LeaveOut(child, mark);
        }
    }

    TSchemaName NameOf(const TXmlNode& node) {
        const TSchemaName name = scopes_.Element(node.Name());
        if (name.Undeclared)
            ReportPrefix(node, node.Prefix());
        return name;
    }

    /// Walks an element without judging it; only its prefixes are looked at.
    void LeaveOut(const TXmlNode& node, const std::optional<TSchemaScopes::TMark>& mark) {
        for (const TXmlAttribute& attribute : node.Attributes())
            if (!IsDeclaration(attribute) && !scopes_.AttributeNamespace(attribute.Name()))
                ReportPrefix(node, attribute.Name().Prefix);
        Open(node, nullptr, mark);
    }

    void Open(const TXmlNode& node, const TSchemaComplexType* type,
              const std::optional<TSchemaScopes::TMark>& mark) {
        TFrame& frame = frames_.emplace_back();
        frame.Node = &node;
        frame.Next = node.FirstChild();
        frame.Type = type;
        frame.Mark = mark;
    }

    // ---- content

    TSchemaDecision Decide(TFrame& frame, const TSchemaName& name, const TXmlNode& child,
                           std::optional<TSchemaScopes::TMark>& mark) {
        if (!frame.Explained) {
            if (const TSchemaPosition* position = Step(frame, name))
                return {position->Element, position->Wildcard};
            // What the child declares is not in force for its siblings.
            scopes_.Leave(mark);
            Explain(frame);
            mark = scopes_.Enter(child);
        }
        return decisions_.back()[frame.ChildIndex];
    }

    /// Takes one element into a frame's automaton; null when it does not fit.
    const TSchemaPosition* Step(TFrame& frame, const TSchemaName& name) {
        const TSchemaAutomaton& automaton = frame.Type->Automaton;
        if (automaton.IsAll)
            return StepAll(frame, name);
        if (frame.State > 0) {
            const TSchemaPosition& current = automaton.Positions[frame.State - 1];
            if (frame.Count < current.Max && Takes(current, name)) {
                ++frame.Count;
                return &current;
            }
        }
        const auto symbols = automaton.FollowSymbols(frame.State);
        std::size_t edge = 0;
        while (edge < symbols.size() && symbols[edge] != name.Symbol)
            ++edge;
        const auto targets = automaton.Follow(frame.State);
        if (edge == symbols.size() && automaton.HasWildcards && !name.Undeclared)
            edge = static_cast<std::size_t>(
                std::find_if(targets.begin(), targets.end(),
                             [&](std::uint32_t p) {
                                 const TSchemaWildcard* wildcard = automaton.Positions[p].Wildcard;
                                 return wildcard != nullptr && wildcard->Admits(name.Namespace);
                             }) -
                targets.begin());
        if (edge == symbols.size())
            return nullptr;
        frame.State = targets[edge] + 1;
        frame.Count = 1;
        return &automaton.Positions[targets[edge]];
    }

    static bool Takes(const TSchemaPosition& position, const TSchemaName& name) {
        if (position.Element != nullptr)
            return position.Element->Symbol == name.Symbol;
        return !name.Undeclared && position.Wildcard->Admits(name.Namespace);
    }

    static const TSchemaPosition* StepAll(TFrame& frame, const TSchemaName& name) {
        const auto& positions = frame.Type->Automaton.Positions;
        for (std::size_t p = 0; p < positions.size(); ++p) {
            const std::uint64_t bit = std::uint64_t{1} << p;
            if (positions[p].Symbol() == name.Symbol && (frame.Seen & bit) == 0) {
                frame.Seen |= bit;
                return &positions[p];
            }
        }
        return nullptr;
    }

    static bool IsComplete(const TFrame& frame) {
        const TSchemaAutomaton& automaton = frame.Type->Automaton;
        if (automaton.IsAll) {
            for (std::size_t p = 0; p < automaton.Positions.size(); ++p)
                if (automaton.Positions[p].Required && (frame.Seen & (std::uint64_t{1} << p)) == 0)
                    return false;
            return true;
        }
        return automaton.Accepting[frame.State] != 0;
    }

    void Finish(TFrame& frame) {
        if (frame.Type == nullptr || frame.Type->Content == TSchemaContent::Empty)
            return;
        if (!frame.Explained && !IsComplete(frame))
            Explain(frame);
        if (frame.Explained)
            decisions_.pop_back();
    }

    /// Looks at a frame's children as a whole and reports what is wrong with them.
    void Explain(TFrame& frame) {
        std::vector<TSchemaChild> children;
        const auto tags = frame.Node->ChildTags();
        children.reserve(static_cast<std::size_t>(std::distance(tags.begin(), tags.end())));
        for (const TXmlNode& child : tags) {
            const auto mark = scopes_.Enter(child);
            children.push_back({&child, scopes_.Element(child.Name())});
            scopes_.Leave(mark);
        }
        const std::size_t around = frames_.size() - 1; // the frame is the innermost
        decisions_.push_back(recovery_.Recover(*frame.Type, *frame.Node, children, frame.Forgiven,
                                               around > 0 ? frames_[around - 1].Type : nullptr, faults_));
        frame.Explained = true;
        if (around == 0 || !children.empty() || !IsBlank(frame.Node->TextWithCData()))
            return;
        const TFrame& outer = frames_[around - 1];
        if (outer.Type != nullptr && !MayLackSibling(frame, outer) && CanGo(outer, decisions_.size() - 1))
            for (auto fault = faults_.Latest().rbegin();
                 fault != faults_.Latest().rend() && fault->Node == frame.Node && IsMissing(fault->Code);
                 ++fault)
                fault->Remedy = TSchemaRemedy::Remove;
    }

    static bool Holds(const TSchemaAutomaton& automaton, std::string_view localName) {
        return std::ranges::any_of(automaton.Positions, [&](const TSchemaPosition& position) {
            return position.Element != nullptr && position.Element->Name == localName;
        });
    }

    /// True when beside an empty element stands one that would have a place in it, and may belong there.
    static bool MayLackSibling(const TFrame& frame, const TFrame& outer) {
        constexpr std::size_t kLooked = 500;
        std::size_t looked = 0;
        for (const TXmlNode& sibling : outer.Node->ChildTags())
            if (++looked > kLooked || Holds(frame.Type->Automaton, sibling.LocalName()))
                return true;
        return false;
    }

    static bool IsMissing(TSchemaFaultCode code) {
        return code == TSchemaFaultCode::MissingElement || code == TSchemaFaultCode::MissingSeveral ||
               code == TSchemaFaultCode::MissingChoice;
    }

    /// The outermost element around the one that is being judged that holds nothing and may be absent, but
    /// not be empty; null for none. What is in it would otherwise go one by one, up to what it has to have.
    const TXmlNode* EmptyGroup() {
        const TXmlNode* group = nullptr;
        std::size_t explained = decisions_.size();
        for (std::size_t i = frames_.size() - 1; i > 0; --i) {
            TFrame& frame = frames_[i];
            if (!frame.HoldsNothing.has_value())
                frame.HoldsNothing = HoldsNothing(*frame.Node);
            if (!*frame.HoldsNothing || frame.Type == nullptr || MayBeEmpty(frame))
                break;
            explained -= frame.Explained ? 1 : 0;
            if (CanGo(frames_[i - 1], explained) && !MayLackSibling(frame, frames_[i - 1]))
                group = frame.Node;
        }
        return group;
    }

    static bool MayBeEmpty(const TFrame& frame) {
        const TSchemaAutomaton& automaton = frame.Type->Automaton;
        return automaton.IsAll ? std::ranges::none_of(automaton.Positions, &TSchemaPosition::Required)
                               : automaton.Accepting[0] != 0;
    }

    static bool HoldsNothing(const TXmlNode& element) {
        for (const TXmlNode* at = &element; at != nullptr; at = at->NextInWalk(&element))
            if (at->IsTag() ? !at->Attributes().empty() || !IsBlank(at->Value())
                            : at->Kind() != TXmlNodeKind::xnText || !IsBlank(at->Value()))
                return false;
        return true;
    }

    /// True when a frame's content is right without the child that is being judged, which holds nothing.
    /// `explained`: number of explained frames up to this one.
    bool CanGo(const TFrame& frame, std::size_t explained) {
        if (frame.Type == nullptr || frame.ChildIndex == 0)
            return false;
        const TSchemaAutomaton& automaton = frame.Type->Automaton;
        if (!frame.Explained && !automaton.IsAll)
            return frame.State > 0 && recovery_.CanGo(automaton, frame.State - 1);
        const TSchemaElement* element =
            frame.Explained ? decisions_[explained - 1][frame.ChildIndex - 1].Element : nullptr;
        for (std::uint32_t p = 0; p < automaton.Positions.size() && element != nullptr; ++p)
            if (automaton.Positions[p].Element == element)
                return recovery_.CanGo(automaton, p);
        return false;
    }

    /// `place`: the node that holds the text, a text or the element itself.
    void JudgeText(TFrame& frame, const TXmlNode& place, std::string_view text) {
        if (frame.Type == nullptr || frame.Type->Content == TSchemaContent::Mixed)
            return;
        if (frame.Type->Content == TSchemaContent::Empty) {
            if (!text.empty())
                ReportContent(frame);
        } else if (!IsBlank(text)) {
            TSchemaFault& fault = Add(TSchemaFaultCode::TextNotAllowed, *frame.Node);
            fault.Found = TrimXmlSpace(text);
            const TXmlPlace start = place.TextPlace();
            fault.Line = start.Line;
            fault.LinePos = start.LinePos;
            fault.FilePos = start.FilePos;
        }
    }

    void ReportContent(TFrame& frame) {
        if (!frame.ContentReported)
            Add(TSchemaFaultCode::ContentNotAllowed, *frame.Node);
        frame.ContentReported = true;
    }

    /// An element that a wildcard admits: by its global declaration, else as the wildcard says.
    void JudgeFree(const TXmlNode& node, const TSchemaName& name, const TSchemaWildcard& wildcard,
                   const std::optional<TSchemaScopes::TMark>& mark) {
        if (const TSchemaElement* element = set_.GlobalElement(name.Symbol))
            return Judge(node, element, {element->SimpleType, element->ComplexType}, mark);
        if (wildcard.Lax || FindXsi(node, "type") != nullptr)
            return Judge(node, nullptr, {nullptr, &set_.AnyType()}, mark);
        Add(TSchemaFaultCode::UndeclaredByName, node);
        LeaveOut(node, mark);
    }

    // ---- one element

    void Judge(const TXmlNode& node, const TSchemaElement* element, TGoverning type,
               const std::optional<TSchemaScopes::TMark>& mark) {
        bool nil = false;
        bool nilRefused = false;
        const bool attributes = !node.Attributes().empty();
        if (attributes) {
            type = ApplyXsiType(node, type);
            nil = IsNil(node, element, nilRefused);
        }
        if (attributes || (type.Complex != nullptr && !type.Complex->Attributes.empty()))
            JudgeAttributes(node, type.Complex);
        if (nil) {
            if (node.FirstChildTag() != nullptr || !node.TextWithCData().empty())
                Add(TSchemaFaultCode::NilWithContent, node);
            return LeaveOut(node, mark);
        }
        // What a refused xsi:nil leaves empty is told by the refusal.
        if (nilRefused && node.FirstChild() == nullptr && node.Value().empty())
            return LeaveOut(node, mark);
        const TSchemaSimpleType* simple = type.Simple;
        if (type.Complex != nullptr && type.Complex->Content == TSchemaContent::Simple)
            simple = type.Complex->SimpleContent;
        if (simple == nullptr) {
            Open(node, type.Complex, mark);
            if (node.FirstChild() == nullptr)
                JudgeText(frames_.back(), node, node.Value());
            return;
        }
        JudgeValue(node, *simple, mark);
    }

    void JudgeValue(const TXmlNode& node, const TSchemaSimpleType& type,
                    const std::optional<TSchemaScopes::TMark>& mark) {
        std::string joined;
        std::string_view raw = node.Value();
        if (node.FirstChild() != nullptr) {
            if (const TXmlNode* inner = node.FirstChildTag()) {
                TSchemaFault& fault = Add(TSchemaFaultCode::ElementInSimpleType, *inner);
                fault.Parent = node.LocalName();
                return LeaveOut(node, mark);
            }
            joined = node.TextWithCData();
            raw = joined;
        }
        scopes_.Leave(mark);
        if (const auto fault = type.Check(raw))
            ReportValue(node, nullptr, type, raw, *fault);
        else if (type.Kind == TSchemaValueKind::Id)
            JudgeId(node, nullptr, raw);
    }

    void JudgeId(const TXmlNode& node, const TXmlAttribute* attribute, std::string_view raw) {
        const std::string_view id = TrimXmlSpace(raw);
        if (ids_.emplace(id).second)
            return;
        Add(TSchemaFaultCode::DuplicateId, node, attribute).Found = id;
    }

    // ---- attributes

    static bool IsDeclaration(const TXmlAttribute& attribute) {
        return attribute.QualifiedName() == "xmlns" || attribute.Name().Prefix == "xmlns";
    }

    bool IsXsi(const TXmlAttribute& attribute) const {
        return !attribute.Name().Prefix.empty() && scopes_.Uri(attribute.Name().Prefix) == kXsiNamespace;
    }

    const TXmlAttribute* FindXsi(const TXmlNode& node, std::string_view local) const {
        for (const TXmlAttribute& attribute : node.Attributes())
            if (attribute.Name().Local == local && IsXsi(attribute))
                return &attribute;
        return nullptr;
    }

    TGoverning ApplyXsiType(const TXmlNode& node, const TGoverning& declared) {
        const TXmlAttribute* attribute = FindXsi(node, "type");
        if (attribute == nullptr)
            return declared;
        const std::string_view written = TrimXmlSpace(attribute->Value());
        const std::size_t colon = written.find(':');
        const std::string_view prefix =
            colon == std::string_view::npos ? std::string_view{} : written.substr(0, colon);
        const std::string_view local = colon == std::string_view::npos ? written : written.substr(colon + 1);
        const auto uri = scopes_.Uri(prefix);
        TGoverning named;
        if (uri) {
            const std::uint32_t id = set_.NamespaceId(*uri);
            named = {set_.FindSimpleType(id, local), set_.FindComplexType(id, local)};
        }
        if (named.Simple == nullptr && named.Complex == nullptr) {
            Add(TSchemaFaultCode::UnknownType, node, attribute).Found = written;
            return declared;
        }
        if (!Derives(named, declared)) {
            Add(TSchemaFaultCode::TypeNotDerived, node, attribute).Found = written;
            return declared;
        }
        return named;
    }

    bool Derives(const TGoverning& type, const TGoverning& declared) const {
        if (declared.Complex == &set_.AnyType())
            return true;
        if (type.Complex != nullptr && declared.Complex != nullptr)
            return type.Complex->DerivesFrom(*declared.Complex);
        const TSchemaSimpleType* simple = type.Simple;
        for (const TSchemaComplexType* step = type.Complex; step != nullptr && simple == nullptr;
             step = step->BaseComplex)
            simple = step->SimpleContent;
        return simple != nullptr && declared.Simple != nullptr && simple->DerivesFrom(*declared.Simple);
    }

    bool IsNil(const TXmlNode& node, const TSchemaElement* element, bool& refused) {
        const TXmlAttribute* attribute = FindXsi(node, "nil");
        if (attribute == nullptr || element == nullptr)
            return false;
        if (!element->Nillable) {
            refused = true;
            Add(TSchemaFaultCode::NilNotAllowed, node, attribute);
            return false;
        }
        const std::string_view value = TrimXmlSpace(attribute->Value());
        if (value != "true" && value != "1" && value != "false" && value != "0") {
            Add(TSchemaFaultCode::NotBoolean, node, attribute).Found = value;
            return false;
        }
        return value == "true" || value == "1";
    }

    void JudgeAttributes(const TXmlNode& node, const TSchemaComplexType* type) {
        static const std::vector<TSchemaAttribute> kNoAttributes;
        const auto& declared = type != nullptr ? type->Attributes : kNoAttributes;
        std::size_t required = static_cast<std::size_t>(std::count_if(
            declared.begin(), declared.end(), [](const TSchemaAttribute& a) { return a.Required; }));
        for (const TXmlAttribute& attribute : node.Attributes()) {
            if (IsDeclaration(attribute))
                continue;
            const auto id = scopes_.AttributeNamespace(attribute.Name());
            if (!id) {
                ReportPrefix(node, attribute.Name().Prefix);
                continue;
            }
            const auto found =
                std::find_if(declared.begin(), declared.end(), [&](const TSchemaAttribute& candidate) {
                    return *id == kSchemaNoNamespace && candidate.Name == attribute.Name().Local;
                });
            if (found != declared.end()) {
                required -= found->Required ? 1 : 0;
                JudgeAttribute(node, attribute, *found);
            } else if (type != &set_.AnyType() && !IsKnownXsi(attribute)) {
                ReportAttribute(node, attribute, type);
            }
        }
        if (required > 0)
            ReportMissingAttributes(node, declared);
    }

    bool IsKnownXsi(const TXmlAttribute& attribute) const {
        const std::string_view local = attribute.Name().Local;
        return (local == "type" || local == "nil" || local == "schemaLocation" ||
                local == "noNamespaceSchemaLocation") &&
               IsXsi(attribute);
    }

    void JudgeAttribute(const TXmlNode& node, const TXmlAttribute& attribute,
                        const TSchemaAttribute& declared) {
        if (const auto fault = declared.Type->Check(attribute.Value()))
            ReportValue(node, &attribute, *declared.Type, attribute.Value(), *fault);
        else if (declared.Type->Kind == TSchemaValueKind::Id)
            JudgeId(node, &attribute, attribute.Value());
    }

    void ReportAttribute(const TXmlNode& node, const TXmlAttribute& attribute,
                         const TSchemaComplexType* type) {
        TSchemaFault& fault = Add(TSchemaFaultCode::UnknownAttribute, node, &attribute);
        fault.Name = attribute.QualifiedName();
        if (type != nullptr)
            for (const TSchemaAttribute& known : type->Attributes)
                fault.Expected.push_back(known.Name);
    }

    void ReportMissingAttributes(const TXmlNode& node, const std::vector<TSchemaAttribute>& declared) {
        for (const TSchemaAttribute& candidate : declared) {
            if (!candidate.Required)
                continue;
            const auto attributes = node.Attributes();
            const bool present =
                std::any_of(attributes.begin(), attributes.end(), [&](const TXmlAttribute& attribute) {
                    return attribute.Name().Local == candidate.Name &&
                           scopes_.AttributeNamespace(attribute.Name()) == kSchemaNoNamespace;
                });
            if (present)
                continue;
            TSchemaFault& fault = Add(TSchemaFaultCode::MissingAttribute, node);
            fault.Parent = fault.Name;
            fault.Name = candidate.Name;
        }
    }

    // ---- reporting

    TSchemaFault& Add(TSchemaFaultCode code, const TXmlNode& node, const TXmlAttribute* attribute = nullptr) {
        TSchemaFault& fault = faults_.Add(MakeSchemaFault(code, node));
        fault.Attribute = attribute;
        const TXmlNode* parent = attribute != nullptr ? &node : node.Parent();
        fault.Name = attribute != nullptr ? attribute->Name().Local : node.LocalName();
        if (parent != nullptr && parent->IsTag())
            fault.Parent = parent->LocalName();
        return fault;
    }

    void ReportPrefix(const TXmlNode& node, std::string_view prefix) {
        if (undeclared_.emplace(prefix).second)
            Add(TSchemaFaultCode::UndeclaredPrefix, node).Found = prefix;
    }

    void ReportValue(const TXmlNode& node, const TXmlAttribute* attribute, const TSchemaSimpleType& type,
                     std::string_view raw, const TSchemaValueFault& found) {
        if (const std::string_view trimmed = TrimXmlSpace(raw);
            !trimmed.empty() && trimmed.size() != raw.size() && !type.Check(trimmed)) {
            TSchemaFault& fault = Add(TSchemaFaultCode::SpaceAround, node, attribute);
            fault.Found = raw;
            fault.Type = &type;
            fault.Bound = trimmed;
            return;
        }
        TSchemaFault& fault = Add(found.Code, node, attribute);
        fault.Found = raw;
        fault.Type = &type;
        if (IsBlank(raw) && attribute == nullptr && !frames_.empty()) {
            fault.Optional = CanGo(frames_.back(), decisions_.size());
            if (node.Attributes().empty()) {
                fault.Other = EmptyGroup();
                if (fault.Optional || fault.Other != nullptr)
                    fault.Remedy = TSchemaRemedy::Remove;
            }
        }
        fault.Bound = found.Bound;
        fault.Count = found.Count;
        fault.Limit = found.Limit;
        if (found.Code == TSchemaFaultCode::NotInList)
            AddCodes(fault, type, raw);
    }

    void AddCodes(TSchemaFault& fault, const TSchemaSimpleType& type, std::string_view raw) {
        const std::vector<std::string>& codes = type.Facets.Codes;
        const std::size_t shown = std::min(kCodesShown, codes.size());
        fault.Expected.assign(codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(shown));
        const auto known = likely_.find({&type, std::string(raw)});
        if (known == likely_.end() && likely_.size() >= kLikelyKept)
            return; // a file of wrong codes throughout: looking for each would take too long
        const TLikelyCodes& likely =
            known != likely_.end()
                ? known->second
                : likely_.emplace(std::pair(&type, std::string(raw)), LikelyCodes(codes, raw)).first->second;
        fault.Bound = likely.Meant;
        fault.Similar = likely.Similar;
    }

    const TSchemaSet& set_;
    const TXmlDocument& document_;
    TSchemaScopes scopes_;
    TSchemaRecovery recovery_;
    std::vector<TFrame> frames_;
    std::vector<std::vector<TSchemaDecision>> decisions_; ///< of the explained frames, innermost last
    TSchemaFaultList faults_; ///< those of a parent's content come after those of its first children
    std::set<std::string, std::less<>> undeclared_;
    std::unordered_set<std::string> ids_;
    /// What was found for wrong codes before.
    std::map<std::pair<const TSchemaSimpleType*, std::string>, TLikelyCodes> likely_;
};

} // namespace

std::vector<TSchemaFault> TSchemaValidator::Validate(const TXmlDocument& document) const {
    return Judge(document, TSchemaFaultList::kAll).Faults;
}

TSchemaVerdict TSchemaValidator::Judge(const TXmlDocument& document, std::size_t limit) const {
    return TValidation(set_, others_, document, limit).Run();
}

} // namespace conferix
