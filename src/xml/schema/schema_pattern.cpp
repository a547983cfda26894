#include "xml/schema/schema_pattern.h"

#include <cstdint>

namespace conferix {

namespace {

class TPatternTranslator {
  public:
    explicit TPatternTranslator(std::string_view pattern) : rest_(pattern) {}

    std::string Translate() {
        while (!rest_.empty())
            TranslateNext();
        if (depth_ != 0)
            throw ESchemaPattern("falta \")\"");
        return std::move(result_);
    }

  private:
    char Take() {
        if (rest_.empty())
            throw ESchemaPattern("termina antes do esperado");
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    void TranslateNext() {
        const char c = Take();
        switch (c) {
        case '(':
            if (!rest_.empty() && rest_.front() == '?')
                throw ESchemaPattern("\"(?\" não é suportado");
            result_ += "(?:";
            ++depth_;
            quantifiable_ = false;
            return;
        case ')':
            if (depth_-- == 0)
                throw ESchemaPattern("\")\" sem \"(\"");
            result_ += c;
            quantifiable_ = true;
            return;
        case '|':
            result_ += c;
            quantifiable_ = false;
            return;
        case '*':
        case '+':
        case '?':
            Quantify(std::string(1, c));
            return;
        case '{':
            TranslateCount();
            return;
        case '}':
        case ']':
            throw ESchemaPattern(std::string("\"") + c + "\" fora de lugar");
        case '[':
            TranslateClass();
            break;
        case '.':
            result_ += "[^\\n\\r]";
            break;
        case '\\':
            TranslateEscape(false);
            break;
        case '^':
        case '$':
            result_ += '\\';
            result_ += c;
            break;
        default:
            result_ += c;
            while (!rest_.empty() && (static_cast<unsigned char>(rest_.front()) & 0xC0) == 0x80)
                result_ += Take();
        }
        quantifiable_ = true;
    }

    void Quantify(const std::string& quantifier) {
        if (!quantifiable_)
            throw ESchemaPattern("\"" + quantifier + "\" sem nada antes para repetir");
        result_ += quantifier;
        quantifiable_ = false;
    }

    void TranslateCount() {
        const std::size_t end = rest_.find('}');
        const std::string_view count = rest_.substr(0, end);
        const std::size_t comma = count.find(',');
        const auto isNumber = [](std::string_view text) {
            return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
        };
        const bool valid = end != std::string_view::npos && isNumber(count.substr(0, comma)) &&
                           (comma == std::string_view::npos || comma + 1 == count.size() ||
                            isNumber(count.substr(comma + 1)));
        if (!valid)
            throw ESchemaPattern("repetição \"{" + std::string(count) + "\" inválida");
        Quantify("{" + std::string(count) + "}");
        rest_.remove_prefix(end + 1);
    }

    void TranslateClass() {
        result_ += '[';
        if (!rest_.empty() && rest_.front() == '^')
            result_ += Take();
        bool first = true;
        for (;; first = false) {
            const char c = Take();
            if (c == ']' && !first) {
                result_ += c;
                return;
            }
            if (c == '[')
                throw ESchemaPattern(rest_.empty() || first ? "\"[\" dentro de uma classe"
                                                            : "subtração de classes não é suportada");
            if (c == ']')
                throw ESchemaPattern("classe vazia");
            if (c == '\\')
                TranslateEscape(true);
            else if (c == '-' && (first || (!rest_.empty() && rest_.front() == ']')))
                result_ += "\\-";
            else if (c == '-' && !rest_.empty() && rest_.front() == '[')
                throw ESchemaPattern("subtração de classes não é suportada");
            else if (c == '^')
                result_ += "\\^";
            else
                result_ += c;
        }
    }

    void TranslateEscape(bool inClass) {
        const char c = Take();
        switch (c) {
        case 'n':
        case 'r':
        case 't':
        case '\\':
        case '|':
        case '.':
        case '-':
        case '^':
        case '?':
        case '*':
        case '+':
        case '{':
        case '}':
        case '(':
        case ')':
        case '[':
        case ']':
            result_ += '\\';
            result_ += c;
            return;
        case 'd':
            result_ += "\\p{Nd}";
            return;
        case 'D':
            result_ += "\\P{Nd}";
            return;
        case 's':
            result_ += inClass ? " \\t\\n\\r" : "[ \\t\\n\\r]";
            return;
        case 'p':
        case 'P':
            TranslateProperty(c);
            return;
        case 'S':
        case 'w':
        case 'W':
            if (inClass)
                break;
            result_ += c == 'S'   ? "[^ \\t\\n\\r]"
                       : c == 'w' ? "[^\\p{P}\\p{Z}\\p{C}]"
                                  : "[\\p{P}\\p{Z}\\p{C}]";
            return;
        default:
            break;
        }
        const std::string shown(1, static_cast<unsigned char>(c) < 0x80 ? c : '?');
        throw ESchemaPattern("\"\\" + shown + "\" não é suportado" + (inClass ? " numa classe" : ""));
    }

    void TranslateProperty(char letter) {
        const std::size_t end = rest_.find('}');
        const std::string_view name = rest_.substr(0, end);
        // General categories only: blocks ("IsBasicLatin") have another meaning in each engine.
        if (end == std::string_view::npos || name.size() < 2 || name.size() > 3 || name[0] != '{')
            throw ESchemaPattern("propriedade \"\\" + std::string(1, letter) + std::string(name) +
                                 "\" não suportada");
        result_ += '\\';
        result_ += letter;
        result_ += name;
        result_ += '}';
        rest_.remove_prefix(end + 1);
    }

    std::string_view rest_;
    std::string result_;
    int depth_ = 0;
    bool quantifiable_ = false;
};

} // namespace

std::string TranslateSchemaPattern(std::string_view pattern) {
    return TPatternTranslator(pattern).Translate();
}

} // namespace conferix
