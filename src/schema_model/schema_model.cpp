#include "schema_model/schema_model.h"

#include "platform/platform.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace conferix {

namespace {

constexpr int kMaxLevels = 60;
constexpr std::size_t kMaxCodesInRun = 10000;

/// A word of a line: blanks in quotes belong to it, a range may follow it.
struct TWord {
    std::string Text;
    bool Quoted = false; ///< the whole word
    TModelVersions Versions;
};

struct TLine {
    int Number = 0;
    int Level = 0;
    std::vector<TWord> Words;
    TModelVersions Versions; ///< of the whole line
};

bool IsVersion(std::string_view text) {
    return text.empty() || (text.size() == 7 && text[1] == '.' && text[4] == '.' &&
                            text.find_first_not_of("0123456789.") == std::string_view::npos);
}

/// Cuts a model file into its lines and words.
class TLines {
  public:
    TLines(std::string_view text, const std::string& file) : file_(file) {
        int number = 0;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            ++number;
            const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
            if (indent == line.size() || line[indent] == '#')
                continue;
            number_ = number;
            if (indent % 2 != 0 || indent / 2 > kMaxLevels)
                Fail("recuo inválido");
            Cut(line.substr(indent), static_cast<int>(indent / 2));
        }
    }

    std::vector<TLine> Take() { return std::move(lines_); }

  private:
    [[noreturn]] void Fail(const std::string& reason) const {
        throw EInvalidSchemaModel(file_, number_, reason);
    }

    void Cut(std::string_view rest, int level) {
        TLine line;
        line.Number = number_;
        line.Level = level;
        bool closed = false;
        while (!rest.empty()) {
            if (rest.front() == ' ') {
                rest.remove_prefix(1);
                continue;
            }
            if (closed)
                Fail("texto depois das versões da linha");
            if (rest.front() == '[') {
                line.Versions = Ranges(rest);
                closed = true;
            } else {
                line.Words.push_back(Word(rest));
            }
        }
        if (line.Words.empty())
            Fail("linha sem conteúdo");
        lines_.push_back(std::move(line));
    }

    TWord Word(std::string_view& rest) const {
        TWord word;
        word.Quoted = rest.front() == '"';
        bool quoted = false;
        std::size_t at = 0;
        for (; at < rest.size() && (quoted || (rest[at] != ' ' && rest[at] != '[')); ++at) {
            if (rest[at] == '"')
                quoted = !quoted;
            else
                word.Text += rest[at];
        }
        if (quoted)
            Fail("aspas não fechadas");
        rest.remove_prefix(at);
        if (!rest.empty() && rest.front() == '[')
            word.Versions = Ranges(rest);
        return word;
    }

    /// Reads "[a-b c- d]" and takes it off the text.
    TModelVersions Ranges(std::string_view& rest) const {
        const std::size_t end = rest.find(']');
        if (end == std::string_view::npos)
            Fail("colchete não fechado");
        std::string_view inner = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
        TModelVersions ranges;
        if (inner.empty())
            Fail("versões vazias");
        while (!inner.empty()) {
            const std::size_t length = std::min(inner.find(' '), inner.size());
            const std::string_view range = inner.substr(0, length);
            inner.remove_prefix(std::min(length + 1, inner.size()));
            const std::size_t dash = range.find('-');
            const std::string_view first = range.substr(0, dash);
            const std::string_view last = dash == std::string_view::npos ? first : range.substr(dash + 1);
            if (!IsVersion(first) || !IsVersion(last) || (first.empty() && last.empty()) ||
                (!first.empty() && !last.empty() && last < first))
                Fail("versões inválidas: " + std::string(range));
            ranges.Add(std::string(first), std::string(last));
        }
        return ranges;
    }

    const std::string& file_;
    int number_ = 0;
    std::vector<TLine> lines_;
};

std::optional<std::uint32_t> Number(std::string_view text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::optional<TModelOccurs> ParseOccurs(std::string_view text) {
    if (text == "?")
        return TModelOccurs{0, 1};
    if (text == "*")
        return TModelOccurs{0, kModelUnbounded};
    if (text == "+")
        return TModelOccurs{1, kModelUnbounded};
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos)
        return std::nullopt;
    const auto min = Number(text.substr(0, dots));
    const std::string_view upper = text.substr(dots + 2);
    const auto max = upper.empty() ? std::optional(kModelUnbounded) : Number(upper);
    if (!min || !max || *max < *min || *max == 0)
        return std::nullopt;
    return TModelOccurs{*min, *max};
}

TModelNode::TKind KindOf(std::string_view word) {
    using TKind = TModelNode::TKind;
    if (word == "sequencia")
        return TKind::Sequence;
    if (word == "escolha")
        return TKind::Choice;
    if (word == "todos")
        return TKind::All;
    if (word == "qualquer")
        return TKind::Any;
    return word.find(':') != std::string_view::npos ? TKind::Reference : TKind::Element;
}

constexpr std::string_view kLimits[] = {"tamanho", "digitos", "decimais", "minimo", "padrao"};

} // namespace

EInvalidSchemaModel::EInvalidSchemaModel(const std::string& file, int line, const std::string& reason)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason) {}

void TModelVersions::Add(std::string first, std::string last) {
    ranges_.push_back({std::move(first), std::move(last)});
}

bool TModelVersions::Contains(std::string_view version) const {
    return ranges_.empty() || std::any_of(ranges_.begin(), ranges_.end(), [version](const TRange& range) {
               return (range.First.empty() || version >= range.First) &&
                      (range.Last.empty() || version <= range.Last);
           });
}

const TModelTerm* TermIn(const std::vector<TModelTerm>& terms, std::string_view version) {
    const auto found = std::find_if(terms.begin(), terms.end(), [version](const TModelTerm& term) {
        return term.Versions.Contains(version);
    });
    return found != terms.end() ? &*found : nullptr;
}

TModelOccurs TModelNode::OccursIn(std::string_view version) const {
    const TModelTerm* term = TermIn(Occurs, version);
    return term != nullptr ? *ParseOccurs(term->Text) : TModelOccurs{};
}

/// Builds a model from the lines of its file.
class TModelReader {
  public:
    TModelReader(std::string_view text, const std::string& name, const std::filesystem::path& folder)
        : folder_(folder), model_(new TSchemaModel), lines_(TLines(text, name).Take()) {
        model_->fileName_ = name;
    }

    std::shared_ptr<const TSchemaModel> Read() {
        while (at_ < lines_.size()) {
            line_ = lines_[at_].Number;
            if (lines_[at_].Level != 0)
                Fail("recuo inesperado");
            Entry(lines_[at_++]);
        }
        if (model_->targetNamespace_.empty() || model_->filePattern_.empty() || model_->elements_.empty())
            Fail("falta \"arquivo\", \"espaco\" ou \"elemento\"");
        return model_;
    }

  private:
    [[noreturn]] void Fail(const std::string& reason) const {
        throw EInvalidSchemaModel(model_->fileName_, line_, reason);
    }

    const std::string& Argument(const TLine& line, std::size_t index) const {
        if (index >= line.Words.size())
            Fail("falta um argumento de \"" + line.Words.front().Text + "\"");
        return line.Words[index].Text;
    }

    static void Append(const TLine& line, std::vector<std::string>& list) {
        for (std::size_t i = 1; i < line.Words.size(); ++i)
            list.push_back(line.Words[i].Text);
    }

    void Entry(const TLine& line) {
        const std::string& word = line.Words.front().Text;
        if (word == "arquivo")
            model_->filePattern_ = Argument(line, 1);
        else if (word == "espaco")
            model_->targetNamespace_ = Argument(line, 1);
        else if (word == "prefixo")
            model_->prefix_ = Argument(line, 1);
        else if (word == "versoes")
            Append(line, model_->versions_);
        else if (word == "aproximadas")
            Append(line, model_->approximate_);
        else if (word == "importa")
            model_->imports_[Argument(line, 1)] =
                TSchemaModel::Load(folder_ / PathFromText(Argument(line, 2)));
        else if (word == "tipos-de")
            model_->shared_ = TSchemaModel::Load(folder_ / PathFromText(Argument(line, 1)));
        else if (word == "elemento")
            model_->elements_.push_back(Node(line, 1));
        else if (word == "tipo")
            ComplexType(line);
        else if (word == "simples")
            SimpleType(line);
        else
            Fail("palavra desconhecida: " + word);
    }

    /// The lines below the one just taken.
    std::vector<TModelNode> Children(int level) {
        std::vector<TModelNode> children;
        while (at_ < lines_.size() && lines_[at_].Level >= level) {
            line_ = lines_[at_].Number;
            if (lines_[at_].Level > level)
                Fail("recuo inesperado");
            const TLine& line = lines_[at_++];
            const bool attribute = line.Words.front().Text == "atributo";
            children.push_back(Node(line, attribute ? 1 : 0));
            if (attribute)
                children.back().Kind = TModelNode::TKind::Attribute;
        }
        return children;
    }

    TModelNode Node(const TLine& line, std::size_t first) {
        TModelNode node;
        node.Name = Argument(line, first);
        node.Kind = KindOf(node.Name);
        node.Versions = line.Versions;
        node.Line = line.Number;
        for (std::size_t i = first + 1; i < line.Words.size(); ++i) {
            const TWord& word = line.Words[i];
            const TModelTerm term{word.Text, word.Versions};
            if (ParseOccurs(word.Text))
                node.Occurs.push_back(term);
            else if (word.Text == "nulo")
                node.Nillable.push_back(term);
            else if (node.Kind == TModelNode::TKind::Any && word.Text == "outros")
                node.Foreign = true;
            else if (node.Kind == TModelNode::TKind::Any && word.Text == "livre")
                node.Lax = true;
            else if (node.Kind != TModelNode::TKind::Element)
                Fail("palavra inesperada: " + word.Text);
            else if (word.Text.starts_with(':'))
                node.Bases.push_back({word.Text.substr(1), word.Versions});
            else
                node.Types.push_back(term);
        }
        node.Children = Children(line.Level + 1);
        if (!node.Types.empty() && (!node.Children.empty() || !node.Bases.empty()))
            Fail(node.Name + " tem tipo e também filhos");
        return node;
    }

    void ComplexType(const TLine& line) {
        TModelComplexType type;
        type.Name = Argument(line, 1);
        type.Line = line.Number;
        for (std::size_t i = 2; i < line.Words.size(); ++i) {
            const TWord& word = line.Words[i];
            if (word.Text.starts_with(':'))
                type.Bases.push_back({word.Text.substr(1), word.Versions});
            else if (word.Text == "misto")
                type.Mixed = true;
            else if (word.Text.starts_with("valor="))
                type.Value = word.Text.substr(6);
            else
                Fail("palavra inesperada: " + word.Text);
        }
        type.Children = Children(1);
        line_ = type.Line;
        if (!model_->complexTypeByName_.emplace(type.Name, model_->complexTypes_.size()).second)
            Fail("tipo repetido: " + type.Name);
        model_->complexTypes_.push_back(std::move(type));
    }

    void SimpleType(const TLine& line) {
        TModelSimpleType type;
        type.Name = Argument(line, 1);
        type.Line = line.Number;
        for (std::size_t i = 2; i < line.Words.size(); ++i) {
            const TWord& word = line.Words[i];
            const std::size_t equals = word.Text.find('=');
            const std::string name = word.Text.substr(0, equals);
            if (equals == std::string::npos)
                type.Bases.push_back({word.Text, word.Versions});
            else if (std::find(std::begin(kLimits), std::end(kLimits), name) != std::end(kLimits))
                type.Limits.push_back({name, {word.Text.substr(equals + 1), word.Versions}});
            else
                Fail("limite desconhecido: " + name);
        }
        if (type.Bases.empty())
            Fail(type.Name + " não tem tipo de base");
        while (at_ < lines_.size() && lines_[at_].Level > 0) {
            line_ = lines_[at_].Number;
            Codes(lines_[at_++], type.Codes);
        }
        line_ = type.Line;
        if (!model_->simpleTypeByName_.emplace(type.Name, model_->simpleTypes_.size()).second)
            Fail("tipo repetido: " + type.Name);
        model_->simpleTypes_.push_back(std::move(type));
    }

    void Codes(const TLine& line, std::vector<TModelTerm>& codes) const {
        for (const TWord& word : line.Words) {
            const std::size_t dots = word.Quoted ? std::string::npos : word.Text.find("..");
            if (dots == std::string::npos) {
                codes.push_back({word.Text, line.Versions});
                continue;
            }
            const std::string first = word.Text.substr(0, dots);
            const std::string last = word.Text.substr(dots + 2);
            const auto from = Number(first);
            const auto to = Number(last);
            if (!from || !to || first.size() != last.size() || *to < *from || *to - *from > kMaxCodesInRun)
                Fail("série de códigos inválida: " + word.Text);
            for (std::uint32_t code = *from; code <= *to; ++code) {
                const std::string digits = std::to_string(code);
                codes.push_back({std::string(first.size() - digits.size(), '0') + digits, line.Versions});
            }
        }
    }

    std::filesystem::path folder_;
    std::shared_ptr<TSchemaModel> model_;
    std::vector<TLine> lines_;
    std::size_t at_ = 0;
    int line_ = 0;
};

std::shared_ptr<const TSchemaModel> TSchemaModel::Load(const std::filesystem::path& file) {
    return Parse(ReadWholeFile(file), PathText(file.filename()), file.parent_path());
}

std::shared_ptr<const TSchemaModel> TSchemaModel::Parse(std::string_view text, const std::string& name,
                                                        const std::filesystem::path& folder) {
    return TModelReader(text, name, folder).Read();
}

bool TSchemaModel::IsApproximate(std::string_view version) const {
    return std::find(approximate_.begin(), approximate_.end(), version) != approximate_.end();
}

std::string TSchemaModel::FileName(std::string_view version) const {
    std::string underscored(version);
    std::replace(underscored.begin(), underscored.end(), '.', '_');
    std::string name = filePattern_;
    if (const std::size_t mark = name.find('%'); mark != std::string::npos)
        name.replace(mark, 1, underscored);
    return name;
}

const TModelComplexType* TSchemaModel::ComplexType(std::string_view name) const {
    const auto found = complexTypeByName_.find(name);
    if (found != complexTypeByName_.end())
        return &complexTypes_[found->second];
    return shared_ != nullptr && simpleTypeByName_.find(name) == simpleTypeByName_.end()
               ? shared_->ComplexType(name)
               : nullptr;
}

const TModelSimpleType* TSchemaModel::SimpleType(std::string_view name) const {
    const auto found = simpleTypeByName_.find(name);
    if (found != simpleTypeByName_.end())
        return &simpleTypes_[found->second];
    return shared_ != nullptr ? shared_->SimpleType(name) : nullptr;
}

const TSchemaModel* TSchemaModel::Imported(std::string_view prefix) const {
    const auto found = imports_.find(prefix);
    return found != imports_.end() ? found->second.get() : nullptr;
}

std::vector<std::shared_ptr<const TSchemaModel>> LoadSchemaModels(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    for (auto entry = std::filesystem::directory_iterator(folder, failure);
         !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        if (entry->path().extension() == ".txt" && entry->path().filename() != "LEIAME.txt")
            files.push_back(entry->path());
    if (failure)
        throw EFileNotRead(folder, ReasonText(failure));
    std::sort(files.begin(), files.end());
    std::vector<std::shared_ptr<const TSchemaModel>> models;
    for (const std::filesystem::path& file : files)
        if (auto model = TSchemaModel::Load(file); !model->Versions().empty())
            models.push_back(std::move(model));
    return models;
}

} // namespace conferix
