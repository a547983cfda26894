#include "xml/schema/schema_reader.h"

#include "xml/schema/schema_facets.h"

#include <algorithm>
#include <charconv>

namespace conferix {

namespace {

/// Nesting of declarations and length of derivation chains; the deepest published ones reach about twenty.
constexpr int kMaxDepth = 100;
constexpr std::size_t kMaxAttributes = 1000;
/// Of all types: places, ways between them and attributes. The published schemas take some ten thousands.
constexpr std::size_t kMaxWork = 5'000'000;

std::string Quoted(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

[[noreturn]] void Unsupported(const TSchemaFile& file, const TXmlNode& node) {
    file.Fail(node, "a construção <" + std::string(node.LocalName()) + "> não é suportada aqui");
}

/// Refuses attributes that are not in the list; those of other namespaces are no part of the schema.
void CheckAttributes(const TSchemaFile& file, const TXmlNode& node,
                     std::initializer_list<std::string_view> known) {
    for (const TXmlAttribute& attribute : node.Attributes()) {
        const std::string_view name = attribute.QualifiedName();
        if (!attribute.Name().Prefix.empty() || name == "xmlns" || name == "id" ||
            std::find(known.begin(), known.end(), name) != known.end())
            continue;
        file.Fail(node, "o atributo " + Quoted(name) + " de <" + std::string(node.LocalName()) +
                            "> não é suportado");
    }
}

std::string_view AttributeOf(const TXmlNode& node, std::string_view name) {
    const TXmlAttribute* attribute = node.Attribute(name);
    return attribute != nullptr ? TrimXmlSpace(attribute->Value()) : std::string_view{};
}

bool BooleanOf(const TSchemaFile& file, const TXmlNode& node, std::string_view name) {
    const std::string_view value = AttributeOf(node, name);
    if (value.empty() || value == "false" || value == "0")
        return false;
    if (value != "true" && value != "1")
        file.Fail(node, "valor inválido de " + std::string(name) + ": " + Quoted(value));
    return true;
}

std::string NameOfComponent(const TSchemaFile& file, const TXmlNode& node) {
    const std::string_view name = AttributeOf(node, "name");
    if (name.empty() || name.find(':') != std::string_view::npos)
        file.Fail(node, "<" + std::string(node.LocalName()) + "> sem nome válido");
    return std::string(name);
}

/// The children that count: annotations are passed over, elements of other namespaces are refused.
std::vector<const TXmlNode*> Declarations(const TSchemaFile& file, const TXmlNode& node) {
    std::vector<const TXmlNode*> result;
    for (const TXmlNode& child : node.ChildTags()) {
        if (!file.IsXsd(child))
            Unsupported(file, child);
        if (child.LocalName() != "annotation")
            result.push_back(&child);
    }
    return result;
}

const TXmlNode& OnlyDeclaration(const TSchemaFile& file, const TXmlNode& node) {
    const auto children = Declarations(file, node);
    if (children.empty())
        file.Fail(node, "<" + std::string(node.LocalName()) + "> vazio");
    if (children.size() > 1)
        Unsupported(file, *children[1]);
    return *children.front();
}

void CheckDepth(const TSchemaFile& file, const TXmlNode& node, int depth) {
    if (depth > kMaxDepth)
        file.Fail(node, "declarações aninhadas ou derivadas fundo demais");
}

} // namespace

std::shared_ptr<const TSchemaSet> TSchemaReader::Read(const TSchemaFiles& files,
                                                      const std::filesystem::path& mainFile) {
    std::shared_ptr<TSchemaSet> set(new TSchemaSet);
    set->mainFile_ = mainFile;
    TSchemaReader reader(*set);
    reader.InternNamespace("");
    reader.AddBuiltins();
    for (const auto& file : files.All()) {
        set->files_.push_back(file->Name());
        reader.Collect(*file);
    }
    set->targetNamespace_ = reader.InternNamespace(files.All().front()->TargetNamespace());
    reader.CompileAll(files);
    return set;
}

TSchemaSimpleType* TSchemaReader::NewSimpleType() {
    return set_.simpleTypes_.emplace_back(std::make_unique<TSchemaSimpleType>()).get();
}

TSchemaComplexType* TSchemaReader::NewComplexType() {
    return set_.complexTypes_.emplace_back(std::make_unique<TSchemaComplexType>()).get();
}

std::uint32_t TSchemaReader::InternNamespace(std::string_view uri) {
    auto& all = set_.namespaces_;
    const auto found = std::find(all.begin(), all.end(), uri);
    if (found != all.end())
        return static_cast<std::uint32_t>(found - all.begin());
    all.emplace_back(uri);
    return static_cast<std::uint32_t>(all.size() - 1);
}

std::uint32_t TSchemaReader::InternSymbol(std::uint32_t namespaceId, const std::string& name) {
    if (const auto found = set_.symbols_.find({namespaceId, name}); found != set_.symbols_.end())
        return found->second;
    const std::string& kept = *set_.symbolNames_.emplace_back(std::make_unique<std::string>(name));
    const auto symbol = static_cast<std::uint32_t>(set_.symbols_.size());
    set_.symbols_.emplace(TSchemaSet::TNameKey{namespaceId, kept}, symbol);
    return symbol;
}

// ---- built-in types

TSchemaSimpleType* TSchemaReader::AddBuiltin(const std::string& name, const TSchemaSimpleType* base,
                                             TSchemaValueKind kind) {
    TSchemaSimpleType* type = NewSimpleType();
    type->Name = name;
    type->Namespace = InternNamespace(kXsdNamespace);
    type->Base = base;
    type->Kind = kind;
    simple_.emplace(std::pair(type->Namespace, name), TSimpleEntry{{}, type, TState::Done});
    return type;
}

/// The types that the standard's schemas use.
void TSchemaReader::AddBuiltins() {
    using TKind = TSchemaValueKind;
    const auto* any = AddBuiltin("anySimpleType", nullptr, TKind::Any);
    const auto* string = AddBuiltin("string", any, TKind::String);
    AddBuiltin("ID", string, TKind::Id);
    AddBuiltin("anyURI", any, TKind::AnyUri);
    AddBuiltin("boolean", any, TKind::Boolean);
    AddBuiltin("date", any, TKind::Date);
    AddBuiltin("time", any, TKind::Time);
    AddBuiltin("dateTime", any, TKind::DateTime);
    AddBuiltin("base64Binary", any, TKind::Base64Binary);
    const auto* decimal = AddBuiltin("decimal", any, TKind::Decimal);
    AddBuiltin("integer", decimal, TKind::Integer);
    AddAnyType();
}

void TSchemaReader::AddAnyType() {
    TSchemaComplexType* type = NewComplexType();
    type->Name = "anyType";
    type->Namespace = InternNamespace(kXsdNamespace);
    type->Content = TSchemaContent::Mixed;
    auto* wildcard = set_.wildcards_.emplace_back(std::make_unique<TSchemaWildcard>()).get();
    wildcard->Lax = true;
    TSchemaParticle particle;
    particle.Kind = TSchemaParticle::TKind::Wildcard;
    particle.Wildcard = wildcard;
    particle.Required = false;
    particle.Max = kSchemaUnbounded;
    type->Automaton = CompileSchemaParticle(particle);
    set_.anyType_ = type;
    complex_.emplace(std::pair(type->Namespace, type->Name), TComplexEntry{{}, type, TState::Done});
}

// ---- collecting global declarations

void TSchemaReader::Collect(const TSchemaFile& file) {
    const std::uint32_t target = InternNamespace(file.TargetNamespace());
    CheckAttributes(file, file.Schema(),
                    {"targetNamespace", "elementFormDefault", "attributeFormDefault", "version"});
    for (const TXmlNode* node : Declarations(file, file.Schema())) {
        const std::string_view kind = node->LocalName();
        if (kind == "include" || kind == "import") {
            CheckAttributes(file, *node, {"schemaLocation", "namespace"});
            continue;
        }
        if (kind != "element" && kind != "simpleType" && kind != "complexType")
            Unsupported(file, *node);
        const std::pair key(target, NameOfComponent(file, *node));
        bool added = false;
        if (kind == "element") {
            auto* element = set_.elements_.emplace_back(std::make_unique<TSchemaElement>()).get();
            element->Name = key.second;
            element->Namespace = target;
            element->Symbol = InternSymbol(target, key.second);
            element->Global = true;
            set_.globalElements_.push_back(element);
            added = elements_.emplace(key, std::pair(TSource{&file, node}, element)).second;
        } else if (kind == "simpleType") {
            TSchemaSimpleType* type = NewSimpleType();
            type->Name = key.second;
            type->Namespace = target;
            added = !complex_.contains(key) && simple_.emplace(key, TSimpleEntry{{&file, node}, type}).second;
        } else {
            TSchemaComplexType* type = NewComplexType();
            type->Name = key.second;
            type->Namespace = target;
            added =
                !simple_.contains(key) && complex_.emplace(key, TComplexEntry{{&file, node}, type}).second;
        }
        if (!added)
            file.Fail(*node, "<" + std::string(kind) + "> " + Quoted(key.second) + " declarado duas vezes");
    }
}

void TSchemaReader::CompileAll(const TSchemaFiles& files) {
    for (auto& [key, entry] : complex_)
        entries_[entry.Type] = &entry;
    for (auto& [key, entry] : simple_)
        CompileSimple(entry, 0);
    for (auto& [key, entry] : complex_)
        CompileComplex(entry, 0);
    for (auto& [key, source] : elements_)
        CompileElement(*source.second, *source.first.File, *source.first.Node, 0);
    if (set_.globalElements_.empty())
        files.All().front()->Fail(files.All().front()->Schema(),
                                  "um esquema que não declara nenhum elemento não é suportado");
    set_.IndexNames();
}

// ---- references

TSchemaReader::TTypeReference TSchemaReader::FindType(const TSchemaFile& file, const TXmlNode& node,
                                                      std::string_view qualified, int depth) {
    const TSchemaReference reference = file.Resolve(node, qualified);
    const std::pair key(InternNamespace(reference.Uri), reference.Local);
    if (const auto simple = simple_.find(key); simple != simple_.end()) {
        if (simple->second.State == TState::Running)
            file.Fail(node, "o tipo " + Quoted(reference.Local) + " deriva de si mesmo");
        CompileSimple(simple->second, depth + 1);
        return {simple->second.Type, nullptr};
    }
    if (const auto complex = complex_.find(key); complex != complex_.end())
        return {nullptr, complex->second.Type};
    if (TSchemaComplexType* signature = SignatureType(reference))
        return {nullptr, signature};
    if (reference.Uri == kXsdNamespace)
        file.Fail(node, "o tipo " + Quoted(reference.Local) + " de XML Schema não é suportado");
    file.Fail(node, "o tipo " + Quoted(qualified) + " não foi encontrado");
}

/// The signature type was published under two names, each in its own edition of one and the same file, and
/// sets of both kinds exist: the name that the file at hand lacks stands for the same type.
TSchemaComplexType* TSchemaReader::SignatureType(const TSchemaReference& reference) {
    if (reference.Local != "assinaturaDigital" && reference.Local != "Signature")
        return nullptr;
    const auto base =
        complex_.find(std::pair(InternNamespace(kSignatureNamespace), std::string_view("SignatureType")));
    if (base == complex_.end() || reference.Uri == kSignatureNamespace)
        return nullptr;
    CompileComplex(base->second, 0);
    TSchemaComplexType* type = NewComplexType();
    const TSchemaComplexType& signature = *base->second.Type;
    type->Name = reference.Local;
    type->Namespace = InternNamespace(reference.Uri);
    type->BaseComplex = &signature;
    type->Content = signature.Content;
    type->Automaton = signature.Automaton;
    type->Attributes = signature.Attributes;
    particles_[type] = particles_[&signature];
    complex_.emplace(std::pair(type->Namespace, type->Name), TComplexEntry{{}, type, TState::Done});
    return type;
}

const TSchemaSimpleType* TSchemaReader::FindSimple(const TSchemaFile& file, const TXmlNode& node,
                                                   std::string_view qualified, int depth) {
    const TTypeReference type = FindType(file, node, qualified, depth);
    if (type.Simple == nullptr)
        file.Fail(node, "o tipo " + Quoted(qualified) + " não é simples");
    return type.Simple;
}

// ---- simple types

void TSchemaReader::CompileSimple(TSimpleEntry& entry, int depth) {
    if (entry.State != TState::Waiting)
        return;
    entry.State = TState::Running;
    CheckAttributes(*entry.Source.File, *entry.Source.Node, {"name"});
    CompileSimpleInto(*entry.Type, *entry.Source.File, *entry.Source.Node, depth);
    entry.State = TState::Done;
}

const TSchemaSimpleType* TSchemaReader::InlineSimple(const TSchemaFile& file, const TXmlNode& node,
                                                     int depth) {
    CheckAttributes(file, node, {});
    TSchemaSimpleType* type = NewSimpleType();
    type->Namespace = InternNamespace(file.TargetNamespace());
    CompileSimpleInto(*type, file, node, depth);
    return type;
}

void TSchemaReader::CompileSimpleInto(TSchemaSimpleType& type, const TSchemaFile& file, const TXmlNode& node,
                                      int depth) {
    CheckDepth(file, node, depth);
    const TXmlNode& restriction = OnlyDeclaration(file, node);
    if (restriction.LocalName() != "restriction")
        Unsupported(file, restriction);
    CheckAttributes(file, restriction, {"base"});
    const std::string_view name = AttributeOf(restriction, "base");
    if (name.empty())
        file.Fail(restriction, "<restriction> sem tipo de base");
    for (const TXmlNode* child : Declarations(file, restriction)) {
        if (!IsSchemaFacet(child->LocalName()))
            Unsupported(file, *child);
        CheckAttributes(file, *child, {"value"});
    }
    RestrictSchemaType(type, *FindSimple(file, restriction, name, depth), file, restriction);
}

// ---- complex types

void TSchemaReader::CompileComplex(TComplexEntry& entry, int depth) {
    if (entry.State != TState::Waiting)
        return;
    entry.State = TState::Running;
    CheckAttributes(*entry.Source.File, *entry.Source.Node, {"name", "mixed"});
    CompileComplexInto(*entry.Type, *entry.Source.File, *entry.Source.Node, depth);
    entry.State = TState::Done;
}

void TSchemaReader::CompileComplexInto(TSchemaComplexType& type, const TSchemaFile& file,
                                       const TXmlNode& node, int depth) {
    CheckDepth(file, node, depth);
    const bool mixed = BooleanOf(file, node, "mixed");
    const auto children = Declarations(file, node);
    if (!children.empty() && (children.front()->LocalName() == "simpleContent" ||
                              children.front()->LocalName() == "complexContent")) {
        const TXmlNode& content = OnlyDeclaration(file, node);
        if (mixed)
            file.Fail(node, "mixed com <" + std::string(content.LocalName()) + "> não é suportado");
        CheckAttributes(file, content, {});
        return content.LocalName() == "simpleContent" ? CompileSimpleContent(type, file, content, depth)
                                                      : CompileComplexContent(type, file, content, depth);
    }
    type.BaseComplex = set_.anyType_;
    FinishContent(type, file, node, ReadBody(type, file, node, depth), mixed);
}

void TSchemaReader::CompileBase(const TSchemaComplexType& base, const TSchemaFile& file, const TXmlNode& step,
                                int depth) {
    const auto entry = entries_.find(&base);
    if (entry == entries_.end())
        return;
    if (entry->second->State == TState::Running)
        file.Fail(step, "o tipo " + Quoted(base.Name) + " deriva de si mesmo");
    CompileComplex(*entry->second, depth + 1);
}

/// The extension below a simpleContent or complexContent.
const TXmlNode& TSchemaReader::Extension(const TSchemaFile& file, const TXmlNode& content) {
    const TXmlNode& step = OnlyDeclaration(file, content);
    if (step.LocalName() != "extension")
        Unsupported(file, step);
    CheckAttributes(file, step, {"base"});
    return step;
}

void TSchemaReader::CompileSimpleContent(TSchemaComplexType& type, const TSchemaFile& file,
                                         const TXmlNode& node, int depth) {
    const TXmlNode& step = Extension(file, node);
    type.Content = TSchemaContent::Simple;
    type.SimpleContent = FindSimple(file, step, AttributeOf(step, "base"), depth);
    for (const TXmlNode* child : Declarations(file, step)) {
        if (child->LocalName() != "attribute")
            Unsupported(file, *child);
        ReadAttribute(type, file, *child, depth);
    }
}

void TSchemaReader::CompileComplexContent(TSchemaComplexType& type, const TSchemaFile& file,
                                          const TXmlNode& node, int depth) {
    const TXmlNode& step = Extension(file, node);
    TSchemaComplexType* base = FindType(file, step, AttributeOf(step, "base"), depth).Complex;
    if (base == nullptr)
        file.Fail(step, "o tipo de base não é complexo");
    CompileBase(*base, file, step, depth);
    if (base->Content == TSchemaContent::Simple || base->Content == TSchemaContent::Mixed)
        file.Fail(step, "a extensão de " + Quoted(base->Name) +
                            ", que admite texto, não é suportada em <complexContent>");
    type.BaseComplex = base;
    type.Attributes = base->Attributes;
    TParticlePtr own = ReadBody(type, file, step, depth);
    const TParticlePtr& first = particles_[base];
    if (own != nullptr && own->Kind == TSchemaParticle::TKind::Sequence && own->Children.empty())
        own = nullptr;
    if (first != nullptr && own != nullptr) {
        auto joined = std::make_shared<TSchemaParticle>();
        // Side by side, not one in the other: a chain of extensions may be long, and the tree is walked by
        // calls.
        const bool plain =
            first->Kind == TSchemaParticle::TKind::Sequence && first->Max == 1 && first->Required;
        joined->Children = plain ? first->Children : std::vector<TParticlePtr>{first};
        joined->Children.push_back(std::move(own));
        own = std::move(joined);
    } else if (own == nullptr) {
        own = first;
    }
    FinishContent(type, file, step, std::move(own), false);
}

TSchemaReader::TParticlePtr TSchemaReader::ReadBody(TSchemaComplexType& type, const TSchemaFile& file,
                                                    const TXmlNode& node, int depth) {
    TParticlePtr particle;
    for (const TXmlNode* child : Declarations(file, node)) {
        const std::string_view kind = child->LocalName();
        if (kind == "attribute")
            ReadAttribute(type, file, *child, depth);
        else if (particle == nullptr && (kind == "sequence" || kind == "choice" || kind == "all"))
            particle = ReadParticle(file, *child, depth + 1);
        else
            Unsupported(file, *child);
    }
    return particle;
}

void TSchemaReader::FinishContent(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                                  TParticlePtr particle, bool mixed) {
    static const TSchemaParticle kNothing;
    try {
        type.Automaton = CompileSchemaParticle(particle != nullptr ? *particle : kNothing);
    } catch (const ESchemaContentModel& error) {
        file.Fail(node,
                  (type.Name.empty() ? std::string() : "tipo " + Quoted(type.Name) + ": ") + error.what());
    }
    // An extension repeats what it goes on from, and so may grow with each step.
    work_ += type.Automaton.Positions.size() + type.Automaton.EdgeTargets.size() + type.Attributes.size();
    if (work_ > kMaxWork)
        file.Fail(node, "os tipos do esquema, juntos, são complexos demais");
    type.Content = mixed                              ? TSchemaContent::Mixed
                   : type.Automaton.Positions.empty() ? TSchemaContent::Empty
                                                      : TSchemaContent::ElementOnly;
    particles_[&type] = type.Automaton.Positions.empty() ? nullptr : std::move(particle);
}

// ---- particles

void TSchemaReader::ReadOccurs(const TSchemaFile& file, const TXmlNode& node,
                               TSchemaParticle& particle) const {
    const std::string_view min = AttributeOf(node, "minOccurs");
    if (!min.empty() && min != "0" && min != "1")
        file.Fail(node, "minOccurs=" + Quoted(min) + " não é suportado");
    particle.Required = min != "0";
    const std::string_view max = AttributeOf(node, "maxOccurs");
    if (max.empty())
        return;
    if (max == "unbounded") {
        particle.Max = kSchemaUnbounded;
        return;
    }
    const auto [end, error] = std::from_chars(max.data(), max.data() + max.size(), particle.Max);
    if (error == std::errc::result_out_of_range && end == max.data() + max.size())
        file.Fail(node, "maxOccurs=" + Quoted(max) + " não é suportado");
    if (error != std::errc() || end != max.data() + max.size() || particle.Max == kSchemaUnbounded)
        file.Fail(node, "valor inválido de maxOccurs: " + Quoted(max));
    if (particle.Max == 0 && particle.Required)
        file.Fail(node, "minOccurs maior do que maxOccurs");
}

TSchemaReader::TParticlePtr TSchemaReader::ReadParticle(const TSchemaFile& file, const TXmlNode& node,
                                                        int depth) {
    using TKind = TSchemaParticle::TKind;
    CheckDepth(file, node, depth);
    auto particle = std::make_shared<TSchemaParticle>();
    ReadOccurs(file, node, *particle);
    const std::string_view kind = node.LocalName();
    if (kind == "element") {
        particle->Kind = TKind::Element;
        particle->Element = ReadElement(file, node, depth);
        return particle;
    }
    if (kind == "any") {
        particle->Kind = TKind::Wildcard;
        particle->Wildcard = ReadWildcard(file, node);
        return particle;
    }
    if (kind != "sequence" && kind != "choice" && kind != "all")
        Unsupported(file, node);
    CheckAttributes(file, node, {"minOccurs", "maxOccurs"});
    particle->Kind = kind == "sequence" ? TKind::Sequence : kind == "choice" ? TKind::Choice : TKind::All;
    bool emptyBranch = false;
    for (const TXmlNode* child : Declarations(file, node)) {
        TParticlePtr part = ReadParticle(file, *child, depth + 1);
        // Empty groups say nothing, but for the one that makes a choice optional.
        const bool empty = part->Kind == TKind::Sequence && part->Children.empty();
        if (!empty || (particle->Kind == TKind::Choice && !emptyBranch))
            particle->Children.push_back(std::move(part));
        emptyBranch = emptyBranch || empty;
    }
    if (particle->Kind == TKind::Choice && particle->Children.empty())
        file.Fail(node, "um <choice> vazio não é suportado");
    return particle;
}

const TSchemaElement* TSchemaReader::ReadElement(const TSchemaFile& file, const TXmlNode& node, int depth) {
    if (const std::string_view name = AttributeOf(node, "ref"); !name.empty()) {
        CheckAttributes(file, node, {"ref", "minOccurs", "maxOccurs"});
        return ReferredElement(file, node, name);
    }
    auto* element = set_.elements_.emplace_back(std::make_unique<TSchemaElement>()).get();
    element->Name = NameOfComponent(file, node);
    element->Namespace =
        file.ElementsQualified() ? InternNamespace(file.TargetNamespace()) : kSchemaNoNamespace;
    element->Symbol = InternSymbol(element->Namespace, element->Name);
    CompileElement(*element, file, node, depth);
    return element;
}

const TSchemaElement* TSchemaReader::ReferredElement(const TSchemaFile& file, const TXmlNode& node,
                                                     std::string_view qualified) {
    const TSchemaReference reference = file.Resolve(node, qualified);
    const auto found = elements_.find(std::pair(InternNamespace(reference.Uri), reference.Local));
    if (found == elements_.end())
        file.Fail(node, "o elemento " + Quoted(qualified) + " não foi encontrado");
    return found->second.second;
}

void TSchemaReader::CompileElement(TSchemaElement& element, const TSchemaFile& file, const TXmlNode& node,
                                   int depth) {
    if (element.Global)
        CheckAttributes(file, node, {"name", "type", "nillable"});
    else
        CheckAttributes(file, node, {"name", "type", "nillable", "minOccurs", "maxOccurs"});
    element.Nillable = BooleanOf(file, node, "nillable");
    if (const std::string_view name = AttributeOf(node, "type"); !name.empty()) {
        const TTypeReference type = FindType(file, node, name, depth);
        element.SimpleType = type.Simple;
        element.ComplexType = type.Complex;
    }
    for (const TXmlNode* child : Declarations(file, node)) {
        const bool free = element.SimpleType == nullptr && element.ComplexType == nullptr;
        if (free && child->LocalName() == "simpleType") {
            element.SimpleType = InlineSimple(file, *child, depth + 1);
        } else if (free && child->LocalName() == "complexType") {
            TSchemaComplexType* type = NewComplexType();
            type->Namespace = InternNamespace(file.TargetNamespace());
            element.ComplexType = type;
            CheckAttributes(file, *child, {"mixed"});
            CompileComplexInto(*type, file, *child, depth + 1);
        } else {
            Unsupported(file, *child);
        }
    }
    if (element.SimpleType == nullptr && element.ComplexType == nullptr)
        element.ComplexType = set_.anyType_;
}

const TSchemaWildcard* TSchemaReader::ReadWildcard(const TSchemaFile& file, const TXmlNode& node) {
    CheckAttributes(file, node, {"namespace", "processContents", "minOccurs", "maxOccurs"});
    if (!Declarations(file, node).empty())
        Unsupported(file, *Declarations(file, node).front());
    auto* wildcard = set_.wildcards_.emplace_back(std::make_unique<TSchemaWildcard>()).get();
    const std::string_view process = AttributeOf(node, "processContents");
    if (!process.empty() && process != "strict" && process != "lax")
        file.Fail(node, "processContents=" + Quoted(process) + " não é suportado");
    wildcard->Lax = process == "lax";
    const std::string_view names = AttributeOf(node, "namespace");
    if (names == "##other")
        wildcard->OtherTo = InternNamespace(file.TargetNamespace());
    else if (node.Attribute("namespace") != nullptr && names != "##any")
        file.Fail(node, "namespace=" + Quoted(names) + " não é suportado em <any>");
    return wildcard;
}

void TSchemaReader::ReadAttribute(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                                  int depth) {
    CheckAttributes(file, node, {"name", "type", "use"});
    TSchemaAttribute attribute;
    attribute.Name = NameOfComponent(file, node);
    if (!Declarations(file, node).empty())
        Unsupported(file, *Declarations(file, node).front());
    const std::string_view name = AttributeOf(node, "type");
    if (name.empty())
        file.Fail(node, "um <attribute> sem tipo não é suportado");
    attribute.Type = FindSimple(file, node, name, depth);
    const std::string_view use = AttributeOf(node, "use");
    if (!use.empty() && use != "required" && use != "optional")
        file.Fail(node, "use=" + Quoted(use) + " não é suportado");
    attribute.Required = use == "required";
    if (type.Attributes.size() >= kMaxAttributes)
        file.Fail(node, "o tipo tem atributos demais");
    for (const TSchemaAttribute& other : type.Attributes)
        if (other.Name == attribute.Name)
            file.Fail(node, "o atributo " + Quoted(attribute.Name) + " é declarado duas vezes");
        else if (other.Type->Kind == TSchemaValueKind::Id && attribute.Type->Kind == TSchemaValueKind::Id)
            file.Fail(node, "um tipo com dois atributos de tipo ID não é suportado");
    type.Attributes.push_back(std::move(attribute));
}

} // namespace conferix
