#include "schema_model/xsd_writer.h"

#include "schema_model/seal.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

namespace conferix {

namespace {

using TKind = TModelNode::TKind;

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string Attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + Escaped(value) + "\"";
}

std::string OccursText(const TModelOccurs& occurs) {
    std::string text;
    if (occurs.Min != 1)
        text += Attribute("minOccurs", std::to_string(occurs.Min));
    if (occurs.Max == kModelUnbounded)
        text += Attribute("maxOccurs", "unbounded");
    else if (occurs.Max != 1)
        text += Attribute("maxOccurs", std::to_string(occurs.Max));
    return text;
}

std::string_view GroupName(TKind kind) {
    return kind == TKind::Choice ? "xs:choice" : kind == TKind::All ? "xs:all" : "xs:sequence";
}

bool IsGroup(TKind kind) {
    return kind == TKind::Sequence || kind == TKind::Choice || kind == TKind::All;
}

/// Writes one version; types follow in the order in which they are first named.
class TXsdWriter {
  public:
    TXsdWriter(const TSchemaModel& model, std::string_view version) : model_(model), version_(version) {}

    std::string Write() {
        std::string body;
        for (const TModelNode& element : model_.Elements())
            if (element.Versions.Contains(version_))
                body += Element(element, false);
        while (!pending_.empty()) {
            const std::string name = pending_.front();
            pending_.pop_front();
            if (const TModelComplexType* type = model_.ComplexType(name))
                body += ComplexType(*type);
            else
                body += SimpleType(*model_.SimpleType(name));
        }
        return Head() + body + "</xs:schema>\n";
    }

  private:
    [[noreturn]] void Fail(int line, const std::string& reason) const {
        throw EInvalidSchemaModel(model_.FileName(version_), line, reason);
    }

    std::string Head() const {
        std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xs:schema";
        head += Attribute("xmlns:xs", "http://www.w3.org/2001/XMLSchema");
        head += Attribute("xmlns:" + model_.Prefix(), model_.TargetNamespace());
        for (const std::string& prefix : imported_)
            head += Attribute("xmlns:" + prefix, model_.Imported(prefix)->TargetNamespace());
        head +=
            Attribute("targetNamespace", model_.TargetNamespace()) + " elementFormDefault=\"qualified\">\n";
        for (const std::string& prefix : imported_) {
            const TSchemaModel& other = *model_.Imported(prefix);
            head += "<xs:import" + Attribute("namespace", other.TargetNamespace()) +
                    Attribute("schemaLocation", other.FileName({})) + "/>\n";
        }
        return head;
    }

    /// Notes that a prefix is used; fails unless its file is imported or it is the model's own.
    void UsePrefix(const std::string& name, int line) {
        const std::string prefix = name.substr(0, name.find(':'));
        if (prefix == model_.Prefix() || prefix == "xs")
            return;
        if (model_.Imported(prefix) == nullptr)
            Fail(line, "o prefixo de " + name + " não foi importado");
        imported_.insert(prefix);
    }

    /// The name of a type as the file refers to it; the type is written later.
    std::string TypeName(const std::string& name, int line) {
        if (name.find(':') != std::string::npos) {
            UsePrefix(name, line);
            return name;
        }
        if (model_.ComplexType(name) == nullptr && model_.SimpleType(name) == nullptr)
            Fail(line, "o tipo " + name + " não existe");
        if (known_.insert(name).second)
            pending_.push_back(name);
        return model_.Prefix() + ":" + name;
    }

    std::string Element(const TModelNode& node, bool local) {
        std::string text = "<xs:element" + Attribute("name", node.Name);
        if (local)
            text += OccursText(node.OccursIn(version_));
        if (TermIn(node.Nillable, version_) != nullptr)
            text += Attribute("nillable", "true");
        if (const TModelTerm* type = TermIn(node.Types, version_))
            return text + Attribute("type", TypeName(type->Text, node.Line)) + "/>\n";
        const TModelTerm* base = TermIn(node.Bases, version_);
        const auto present = [this](const TModelNode& child) { return child.Versions.Contains(version_); };
        if (base == nullptr && std::none_of(node.Children.begin(), node.Children.end(), present))
            Fail(node.Line, node.Name + " não tem tipo nem filhos na versão " + version_);
        return text + ">\n<xs:complexType>\n" + Content(node.Children, base, node.Line) +
               "</xs:complexType>\n</xs:element>\n";
    }

    std::string ComplexType(const TModelComplexType& type) {
        std::string text = "<xs:complexType" + Attribute("name", type.Name);
        if (type.Mixed)
            text += Attribute("mixed", "true");
        text += ">\n";
        if (type.Value.empty())
            text += Content(type.Children, TermIn(type.Bases, version_), type.Line);
        else
            text += "<xs:simpleContent>\n<xs:extension" + Attribute("base", TypeName(type.Value, type.Line)) +
                    ">\n" + Attributes(type.Children) + "</xs:extension>\n</xs:simpleContent>\n";
        return text + "</xs:complexType>\n";
    }

    std::string Content(const std::vector<TModelNode>& children, const TModelTerm* base, int line) {
        std::string body = Body(children) + Attributes(children);
        if (base == nullptr)
            return body;
        return "<xs:complexContent>\n<xs:extension" + Attribute("base", TypeName(base->Text, line)) + ">\n" +
               body + "</xs:extension>\n</xs:complexContent>\n";
    }

    /// The children as one group: the one that they are, or a sequence of them.
    std::string Body(const std::vector<TModelNode>& children) {
        std::vector<const TModelNode*> present;
        for (const TModelNode& child : children)
            if (child.Kind != TKind::Attribute && child.Versions.Contains(version_))
                present.push_back(&child);
        if (present.empty())
            return {};
        if (present.size() == 1 && IsGroup(present.front()->Kind))
            return Particle(*present.front());
        std::string text = "<xs:sequence>\n";
        for (const TModelNode* child : present)
            text += Particle(*child);
        return text + "</xs:sequence>\n";
    }

    std::string Particle(const TModelNode& node) {
        if (node.Kind == TKind::Element)
            return Element(node, true);
        const std::string occurs = OccursText(node.OccursIn(version_));
        if (node.Kind == TKind::Reference) {
            UsePrefix(node.Name, node.Line);
            return "<xs:element" + Attribute("ref", node.Name) + occurs + "/>\n";
        }
        if (node.Kind == TKind::Any)
            return "<xs:any" + Attribute("namespace", node.Foreign ? "##other" : "##any") +
                   (node.Lax ? Attribute("processContents", "lax") : "") + occurs + "/>\n";
        const std::string group(GroupName(node.Kind));
        std::string text = "<" + group + occurs + ">\n";
        for (const TModelNode& child : node.Children)
            if (child.Versions.Contains(version_))
                text += Particle(child);
        return text + "</" + group + ">\n";
    }

    std::string Attributes(const std::vector<TModelNode>& children) {
        std::string text;
        for (const TModelNode& child : children) {
            if (child.Kind != TKind::Attribute || !child.Versions.Contains(version_))
                continue;
            const TModelTerm* type = TermIn(child.Types, version_);
            if (type == nullptr)
                Fail(child.Line, "o atributo " + child.Name + " não tem tipo");
            text += "<xs:attribute" + Attribute("name", child.Name) +
                    Attribute("type", TypeName(type->Text, child.Line)) +
                    (child.OccursIn(version_).Min == 0 ? "" : Attribute("use", "required")) + "/>\n";
        }
        return text;
    }

    static std::string Facet(std::string_view name, std::string_view value) {
        return "<xs:" + std::string(name) + Attribute("value", value) + "/>";
    }

    static std::string LimitFacets(const std::string& name, const std::string& value) {
        if (name == "digitos")
            return Facet("totalDigits", value);
        if (name == "decimais")
            return Facet("fractionDigits", value);
        if (name == "minimo")
            return Facet("minInclusive", value);
        if (name == "padrao")
            return Facet("pattern", value);
        const std::size_t dots = value.find("..");
        if (dots == std::string::npos)
            return Facet("length", value);
        std::string text;
        if (dots > 0)
            text += Facet("minLength", value.substr(0, dots));
        if (dots + 2 < value.size())
            text += Facet("maxLength", value.substr(dots + 2));
        return text;
    }

    std::string SimpleType(const TModelSimpleType& type) {
        const TModelTerm* base = TermIn(type.Bases, version_);
        if (base == nullptr)
            Fail(type.Line, type.Name + " não tem tipo de base na versão " + version_);
        std::string text = "<xs:simpleType" + Attribute("name", type.Name) + "><xs:restriction" +
                           Attribute("base", TypeName(base->Text, type.Line)) + ">";
        for (const TModelLimit& limit : type.Limits)
            if (limit.Value.Versions.Contains(version_))
                text += LimitFacets(limit.Name, limit.Value.Text);
        bool some = false;
        for (const TModelTerm& code : type.Codes) {
            if (!code.Versions.Contains(version_))
                continue;
            text += Facet("enumeration", code.Text);
            some = true;
        }
        if (!some && !type.Codes.empty())
            Fail(type.Line, type.Name + " não tem códigos na versão " + version_);
        return text + "</xs:restriction></xs:simpleType>\n";
    }

    const TSchemaModel& model_;
    std::string version_;
    std::set<std::string> imported_;
    std::set<std::string> known_;
    std::deque<std::string> pending_;
};

} // namespace

std::string MakeXsd(const TSchemaModel& model, std::string_view version) {
    return WithSeal(TXsdWriter(model, version).Write(), model.IsApproximate(version));
}

} // namespace conferix
