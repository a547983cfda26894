#include "schema_model/esquema_xsd.h"

#include "schema_model/selo.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

namespace conferix {

namespace {

using TTipo = TModeloNo::TTipo;

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

std::string VezesText(const TModeloVezes& vezes) {
    std::string text;
    if (vezes.Min != 1)
        text += Attribute("minOccurs", std::to_string(vezes.Min));
    if (vezes.Max == kModeloSemLimite)
        text += Attribute("maxOccurs", "unbounded");
    else if (vezes.Max != 1)
        text += Attribute("maxOccurs", std::to_string(vezes.Max));
    return text;
}

std::string_view GroupName(TTipo tipo) {
    return tipo == TTipo::Escolha ? "xs:choice" : tipo == TTipo::Todos ? "xs:all" : "xs:sequence";
}

bool IsGroup(TTipo tipo) {
    return tipo == TTipo::Sequencia || tipo == TTipo::Escolha || tipo == TTipo::Todos;
}

/// Writes one version; types follow in the order in which they are first named.
class TXsdWriter {
  public:
    TXsdWriter(const TEsquemaModelo& modelo, std::string_view versao) : modelo_(modelo), versao_(versao) {}

    std::string Write() {
        std::string body;
        for (const TModeloNo& element : modelo_.Elementos())
            if (element.Versoes.Contains(versao_))
                body += Element(element, false);
        while (!pending_.empty()) {
            const std::string name = pending_.front();
            pending_.pop_front();
            if (const TModeloTipo* type = modelo_.Tipo(name))
                body += ComplexType(*type);
            else
                body += SimpleType(*modelo_.Simples(name));
        }
        return Head() + body + "</xs:schema>\n";
    }

  private:
    [[noreturn]] void Fail(int line, const std::string& reason) const {
        throw EModeloInvalido(modelo_.NomeArquivo(versao_), line, reason);
    }

    std::string Head() const {
        std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xs:schema";
        head += Attribute("xmlns:xs", "http://www.w3.org/2001/XMLSchema");
        head += Attribute("xmlns:" + modelo_.Prefixo(), modelo_.Espaco());
        for (const std::string& prefix : imported_)
            head += Attribute("xmlns:" + prefix, modelo_.Importado(prefix)->Espaco());
        head += Attribute("targetNamespace", modelo_.Espaco()) + " elementFormDefault=\"qualified\">\n";
        for (const std::string& prefix : imported_) {
            const TEsquemaModelo& other = *modelo_.Importado(prefix);
            head += "<xs:import" + Attribute("namespace", other.Espaco()) +
                    Attribute("schemaLocation", other.NomeArquivo({})) + "/>\n";
        }
        return head;
    }

    /// Notes that a prefix is used; fails unless its file is imported or it is the model's own.
    void UsePrefix(const std::string& name, int line) {
        const std::string prefix = name.substr(0, name.find(':'));
        if (prefix == modelo_.Prefixo() || prefix == "xs")
            return;
        if (modelo_.Importado(prefix) == nullptr)
            Fail(line, "o prefixo de " + name + " não foi importado");
        imported_.insert(prefix);
    }

    /// The name of a type as the file refers to it; the type is written later.
    std::string TypeName(const std::string& name, int line) {
        if (name.find(':') != std::string::npos) {
            UsePrefix(name, line);
            return name;
        }
        if (modelo_.Tipo(name) == nullptr && modelo_.Simples(name) == nullptr)
            Fail(line, "o tipo " + name + " não existe");
        if (known_.insert(name).second)
            pending_.push_back(name);
        return modelo_.Prefixo() + ":" + name;
    }

    std::string Element(const TModeloNo& node, bool local) {
        std::string text = "<xs:element" + Attribute("name", node.Nome);
        if (local)
            text += VezesText(node.VezesEm(versao_));
        if (TermoEm(node.Nulo, versao_) != nullptr)
            text += Attribute("nillable", "true");
        if (const TModeloTermo* type = TermoEm(node.Tipos, versao_))
            return text + Attribute("type", TypeName(type->Text, node.Linha)) + "/>\n";
        const TModeloTermo* base = TermoEm(node.Bases, versao_);
        const auto present = [this](const TModeloNo& child) { return child.Versoes.Contains(versao_); };
        if (base == nullptr && std::none_of(node.Filhos.begin(), node.Filhos.end(), present))
            Fail(node.Linha, node.Nome + " não tem tipo nem filhos na versão " + versao_);
        return text + ">\n<xs:complexType>\n" + Content(node.Filhos, base, node.Linha) +
               "</xs:complexType>\n</xs:element>\n";
    }

    std::string ComplexType(const TModeloTipo& type) {
        std::string text = "<xs:complexType" + Attribute("name", type.Nome);
        if (type.Misto)
            text += Attribute("mixed", "true");
        text += ">\n";
        if (type.Valor.empty())
            text += Content(type.Filhos, TermoEm(type.Bases, versao_), type.Linha);
        else
            text += "<xs:simpleContent>\n<xs:extension" +
                    Attribute("base", TypeName(type.Valor, type.Linha)) + ">\n" + Attributes(type.Filhos) +
                    "</xs:extension>\n</xs:simpleContent>\n";
        return text + "</xs:complexType>\n";
    }

    std::string Content(const std::vector<TModeloNo>& children, const TModeloTermo* base, int line) {
        const std::string body = Body(children) + Attributes(children);
        if (base == nullptr)
            return body;
        return "<xs:complexContent>\n<xs:extension" + Attribute("base", TypeName(base->Text, line)) + ">\n" +
               body + "</xs:extension>\n</xs:complexContent>\n";
    }

    /// The children as one group: the one that they are, or a sequence of them.
    std::string Body(const std::vector<TModeloNo>& children) {
        std::vector<const TModeloNo*> present;
        for (const TModeloNo& child : children)
            if (child.Tipo != TTipo::Atributo && child.Versoes.Contains(versao_))
                present.push_back(&child);
        if (present.empty())
            return {};
        if (present.size() == 1 && IsGroup(present.front()->Tipo))
            return Particle(*present.front());
        std::string text = "<xs:sequence>\n";
        for (const TModeloNo* child : present)
            text += Particle(*child);
        return text + "</xs:sequence>\n";
    }

    std::string Particle(const TModeloNo& node) {
        if (node.Tipo == TTipo::Elemento)
            return Element(node, true);
        const std::string vezes = VezesText(node.VezesEm(versao_));
        if (node.Tipo == TTipo::Referencia) {
            UsePrefix(node.Nome, node.Linha);
            return "<xs:element" + Attribute("ref", node.Nome) + vezes + "/>\n";
        }
        if (node.Tipo == TTipo::Qualquer)
            return "<xs:any" + Attribute("namespace", node.Outros ? "##other" : "##any") +
                   (node.Livre ? Attribute("processContents", "lax") : "") + vezes + "/>\n";
        const std::string group(GroupName(node.Tipo));
        std::string text = "<" + group + vezes + ">\n";
        for (const TModeloNo& child : node.Filhos)
            if (child.Versoes.Contains(versao_))
                text += Particle(child);
        return text + "</" + group + ">\n";
    }

    std::string Attributes(const std::vector<TModeloNo>& children) {
        std::string text;
        for (const TModeloNo& child : children) {
            if (child.Tipo != TTipo::Atributo || !child.Versoes.Contains(versao_))
                continue;
            const TModeloTermo* type = TermoEm(child.Tipos, versao_);
            if (type == nullptr)
                Fail(child.Linha, "o atributo " + child.Nome + " não tem tipo");
            text += "<xs:attribute" + Attribute("name", child.Nome) +
                    Attribute("type", TypeName(type->Text, child.Linha)) +
                    (child.VezesEm(versao_).Min == 0 ? "" : Attribute("use", "required")) + "/>\n";
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

    std::string SimpleType(const TModeloSimples& type) {
        const TModeloTermo* base = TermoEm(type.Bases, versao_);
        if (base == nullptr)
            Fail(type.Linha, type.Nome + " não tem tipo de base na versão " + versao_);
        std::string text = "<xs:simpleType" + Attribute("name", type.Nome) + "><xs:restriction" +
                           Attribute("base", TypeName(base->Text, type.Linha)) + ">";
        for (const TModeloLimite& limit : type.Limites)
            if (limit.Valor.Versoes.Contains(versao_))
                text += LimitFacets(limit.Nome, limit.Valor.Text);
        bool some = false;
        for (const TModeloTermo& code : type.Codigos) {
            if (!code.Versoes.Contains(versao_))
                continue;
            text += Facet("enumeration", code.Text);
            some = true;
        }
        if (!some && !type.Codigos.empty())
            Fail(type.Linha, type.Nome + " não tem códigos na versão " + versao_);
        return text + "</xs:restriction></xs:simpleType>\n";
    }

    const TEsquemaModelo& modelo_;
    std::string versao_;
    std::set<std::string> imported_;
    std::set<std::string> known_;
    std::deque<std::string> pending_;
};

} // namespace

std::string EsquemaXsd(const TEsquemaModelo& modelo, std::string_view versao) {
    return ComSelo(TXsdWriter(modelo, versao).Write());
}

} // namespace conferix
