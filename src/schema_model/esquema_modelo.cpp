#include "schema_model/esquema_modelo.h"

#include "platform/platform.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace conferix {

namespace {

constexpr int kMaxNiveis = 60;
constexpr std::size_t kMaxCodigosEmSerie = 10000;

/// A word of a line: blanks in quotes belong to it, a range may follow it.
struct TPalavra {
    std::string Text;
    bool Quoted = false; ///< the whole word
    TModeloVersoes Versoes;
};

struct TLinha {
    int Number = 0;
    int Nivel = 0;
    std::vector<TPalavra> Palavras;
    TModeloVersoes Versoes; ///< of the whole line
};

bool IsVersion(std::string_view text) {
    return text.empty() || (text.size() == 7 && text[1] == '.' && text[4] == '.' &&
                            text.find_first_not_of("0123456789.") == std::string_view::npos);
}

/// Cuts a model file into its lines and words.
class TLinhas {
  public:
    TLinhas(std::string_view text, const std::string& file) : file_(file) {
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
            if (indent % 2 != 0 || indent / 2 > kMaxNiveis)
                Fail("recuo inválido");
            Cut(line.substr(indent), static_cast<int>(indent / 2));
        }
    }

    std::vector<TLinha> Take() { return std::move(lines_); }

  private:
    [[noreturn]] void Fail(const std::string& reason) const { throw EModeloInvalido(file_, number_, reason); }

    void Cut(std::string_view rest, int nivel) {
        TLinha line;
        line.Number = number_;
        line.Nivel = nivel;
        bool closed = false;
        while (!rest.empty()) {
            if (rest.front() == ' ') {
                rest.remove_prefix(1);
                continue;
            }
            if (closed)
                Fail("texto depois das versões da linha");
            if (rest.front() == '[') {
                line.Versoes = Ranges(rest);
                closed = true;
            } else {
                line.Palavras.push_back(Word(rest));
            }
        }
        if (line.Palavras.empty())
            Fail("linha sem conteúdo");
        lines_.push_back(std::move(line));
    }

    TPalavra Word(std::string_view& rest) const {
        TPalavra word;
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
            word.Versoes = Ranges(rest);
        return word;
    }

    /// Reads "[a-b c- d]" and takes it off the text.
    TModeloVersoes Ranges(std::string_view& rest) const {
        const std::size_t end = rest.find(']');
        if (end == std::string_view::npos)
            Fail("colchete não fechado");
        std::string_view inner = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
        TModeloVersoes ranges;
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
    std::vector<TLinha> lines_;
};

std::optional<std::uint32_t> Number(std::string_view text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::optional<TModeloVezes> ParseVezes(std::string_view text) {
    if (text == "?")
        return TModeloVezes{0, 1};
    if (text == "*")
        return TModeloVezes{0, kModeloSemLimite};
    if (text == "+")
        return TModeloVezes{1, kModeloSemLimite};
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos)
        return std::nullopt;
    const auto min = Number(text.substr(0, dots));
    const std::string_view upper = text.substr(dots + 2);
    const auto max = upper.empty() ? std::optional(kModeloSemLimite) : Number(upper);
    if (!min || !max || *max < *min || *max == 0)
        return std::nullopt;
    return TModeloVezes{*min, *max};
}

TModeloNo::TTipo KindOf(std::string_view word) {
    using TTipo = TModeloNo::TTipo;
    if (word == "sequencia")
        return TTipo::Sequencia;
    if (word == "escolha")
        return TTipo::Escolha;
    if (word == "todos")
        return TTipo::Todos;
    if (word == "qualquer")
        return TTipo::Qualquer;
    return word.find(':') != std::string_view::npos ? TTipo::Referencia : TTipo::Elemento;
}

constexpr std::string_view kLimites[] = {"tamanho", "digitos", "decimais", "minimo", "padrao"};

} // namespace

EModeloInvalido::EModeloInvalido(const std::string& file, int line, const std::string& reason)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason) {}

void TModeloVersoes::Add(std::string first, std::string last) {
    ranges_.push_back({std::move(first), std::move(last)});
}

bool TModeloVersoes::Contains(std::string_view versao) const {
    return ranges_.empty() || std::any_of(ranges_.begin(), ranges_.end(), [versao](const TRange& range) {
               return (range.First.empty() || versao >= range.First) &&
                      (range.Last.empty() || versao <= range.Last);
           });
}

const TModeloTermo* TermoEm(const std::vector<TModeloTermo>& termos, std::string_view versao) {
    const auto found = std::find_if(termos.begin(), termos.end(), [versao](const TModeloTermo& termo) {
        return termo.Versoes.Contains(versao);
    });
    return found != termos.end() ? &*found : nullptr;
}

TModeloVezes TModeloNo::VezesEm(std::string_view versao) const {
    const TModeloTermo* termo = TermoEm(Vezes, versao);
    return termo != nullptr ? *ParseVezes(termo->Text) : TModeloVezes{};
}

/// Builds a model from the lines of its file.
class TModeloReader {
  public:
    TModeloReader(std::string_view text, const std::string& name, const std::filesystem::path& folder)
        : folder_(folder), model_(new TEsquemaModelo), lines_(TLinhas(text, name).Take()) {
        model_->arquivo_ = name;
    }

    std::shared_ptr<const TEsquemaModelo> Read() {
        while (at_ < lines_.size()) {
            line_ = lines_[at_].Number;
            if (lines_[at_].Nivel != 0)
                Fail("recuo inesperado");
            Entry(lines_[at_++]);
        }
        if (model_->espaco_.empty() || model_->padraoArquivo_.empty() || model_->elementos_.empty())
            Fail("falta \"arquivo\", \"espaco\" ou \"elemento\"");
        return model_;
    }

  private:
    [[noreturn]] void Fail(const std::string& reason) const {
        throw EModeloInvalido(model_->arquivo_, line_, reason);
    }

    const std::string& Argument(const TLinha& line, std::size_t index) const {
        if (index >= line.Palavras.size())
            Fail("falta um argumento de \"" + line.Palavras.front().Text + "\"");
        return line.Palavras[index].Text;
    }

    static void Append(const TLinha& line, std::vector<std::string>& list) {
        for (std::size_t i = 1; i < line.Palavras.size(); ++i)
            list.push_back(line.Palavras[i].Text);
    }

    void Entry(const TLinha& line) {
        const std::string& word = line.Palavras.front().Text;
        if (word == "arquivo")
            model_->padraoArquivo_ = Argument(line, 1);
        else if (word == "espaco")
            model_->espaco_ = Argument(line, 1);
        else if (word == "prefixo")
            model_->prefixo_ = Argument(line, 1);
        else if (word == "versoes")
            Append(line, model_->versoes_);
        else if (word == "aproximadas")
            Append(line, model_->aproximadas_);
        else if (word == "importa")
            model_->importados_[Argument(line, 1)] =
                TEsquemaModelo::Load(folder_ / PathFromText(Argument(line, 2)));
        else if (word == "tipos-de")
            model_->compartilhado_ = TEsquemaModelo::Load(folder_ / PathFromText(Argument(line, 1)));
        else if (word == "elemento")
            model_->elementos_.push_back(Node(line, 1));
        else if (word == "tipo")
            Tipo(line);
        else if (word == "simples")
            Simples(line);
        else
            Fail("palavra desconhecida: " + word);
    }

    /// The lines below the one just taken.
    std::vector<TModeloNo> Children(int nivel) {
        std::vector<TModeloNo> children;
        while (at_ < lines_.size() && lines_[at_].Nivel >= nivel) {
            line_ = lines_[at_].Number;
            if (lines_[at_].Nivel > nivel)
                Fail("recuo inesperado");
            const TLinha& line = lines_[at_++];
            const bool attribute = line.Palavras.front().Text == "atributo";
            children.push_back(Node(line, attribute ? 1 : 0));
            if (attribute)
                children.back().Tipo = TModeloNo::TTipo::Atributo;
        }
        return children;
    }

    TModeloNo Node(const TLinha& line, std::size_t first) {
        TModeloNo node;
        node.Nome = Argument(line, first);
        node.Tipo = KindOf(node.Nome);
        node.Versoes = line.Versoes;
        node.Linha = line.Number;
        for (std::size_t i = first + 1; i < line.Palavras.size(); ++i) {
            const TPalavra& word = line.Palavras[i];
            const TModeloTermo termo{word.Text, word.Versoes};
            if (ParseVezes(word.Text))
                node.Vezes.push_back(termo);
            else if (word.Text == "nulo")
                node.Nulo.push_back(termo);
            else if (node.Tipo == TModeloNo::TTipo::Qualquer && word.Text == "outros")
                node.Outros = true;
            else if (node.Tipo == TModeloNo::TTipo::Qualquer && word.Text == "livre")
                node.Livre = true;
            else if (node.Tipo != TModeloNo::TTipo::Elemento)
                Fail("palavra inesperada: " + word.Text);
            else if (word.Text.starts_with(':'))
                node.Bases.push_back({word.Text.substr(1), word.Versoes});
            else
                node.Tipos.push_back(termo);
        }
        node.Filhos = Children(line.Nivel + 1);
        if (!node.Tipos.empty() && (!node.Filhos.empty() || !node.Bases.empty()))
            Fail(node.Nome + " tem tipo e também filhos");
        return node;
    }

    void Tipo(const TLinha& line) {
        TModeloTipo type;
        type.Nome = Argument(line, 1);
        type.Linha = line.Number;
        for (std::size_t i = 2; i < line.Palavras.size(); ++i) {
            const TPalavra& word = line.Palavras[i];
            if (word.Text.starts_with(':'))
                type.Bases.push_back({word.Text.substr(1), word.Versoes});
            else if (word.Text == "misto")
                type.Misto = true;
            else if (word.Text.starts_with("valor="))
                type.Valor = word.Text.substr(6);
            else
                Fail("palavra inesperada: " + word.Text);
        }
        type.Filhos = Children(1);
        line_ = type.Linha;
        if (!model_->tipoPorNome_.emplace(type.Nome, model_->tipos_.size()).second)
            Fail("tipo repetido: " + type.Nome);
        model_->tipos_.push_back(std::move(type));
    }

    void Simples(const TLinha& line) {
        TModeloSimples type;
        type.Nome = Argument(line, 1);
        type.Linha = line.Number;
        for (std::size_t i = 2; i < line.Palavras.size(); ++i) {
            const TPalavra& word = line.Palavras[i];
            const std::size_t equals = word.Text.find('=');
            const std::string name = word.Text.substr(0, equals);
            if (equals == std::string::npos)
                type.Bases.push_back({word.Text, word.Versoes});
            else if (std::find(std::begin(kLimites), std::end(kLimites), name) != std::end(kLimites))
                type.Limites.push_back({name, {word.Text.substr(equals + 1), word.Versoes}});
            else
                Fail("limite desconhecido: " + name);
        }
        if (type.Bases.empty())
            Fail(type.Nome + " não tem tipo de base");
        while (at_ < lines_.size() && lines_[at_].Nivel > 0) {
            line_ = lines_[at_].Number;
            Codes(lines_[at_++], type.Codigos);
        }
        line_ = type.Linha;
        if (!model_->simplesPorNome_.emplace(type.Nome, model_->simples_.size()).second)
            Fail("tipo repetido: " + type.Nome);
        model_->simples_.push_back(std::move(type));
    }

    void Codes(const TLinha& line, std::vector<TModeloTermo>& codes) const {
        for (const TPalavra& word : line.Palavras) {
            const std::size_t dots = word.Quoted ? std::string::npos : word.Text.find("..");
            if (dots == std::string::npos) {
                codes.push_back({word.Text, line.Versoes});
                continue;
            }
            const std::string first = word.Text.substr(0, dots);
            const std::string last = word.Text.substr(dots + 2);
            const auto from = Number(first);
            const auto to = Number(last);
            if (!from || !to || first.size() != last.size() || *to < *from ||
                *to - *from > kMaxCodigosEmSerie)
                Fail("série de códigos inválida: " + word.Text);
            for (std::uint32_t code = *from; code <= *to; ++code) {
                const std::string digits = std::to_string(code);
                codes.push_back({std::string(first.size() - digits.size(), '0') + digits, line.Versoes});
            }
        }
    }

    std::filesystem::path folder_;
    std::shared_ptr<TEsquemaModelo> model_;
    std::vector<TLinha> lines_;
    std::size_t at_ = 0;
    int line_ = 0;
};

std::shared_ptr<const TEsquemaModelo> TEsquemaModelo::Load(const std::filesystem::path& file) {
    return Parse(ReadWholeFile(file), PathText(file.filename()), file.parent_path());
}

std::shared_ptr<const TEsquemaModelo> TEsquemaModelo::Parse(std::string_view text, const std::string& name,
                                                            const std::filesystem::path& folder) {
    return TModeloReader(text, name, folder).Read();
}

bool TEsquemaModelo::Aproximada(std::string_view versao) const {
    return std::find(aproximadas_.begin(), aproximadas_.end(), versao) != aproximadas_.end();
}

std::string TEsquemaModelo::NomeArquivo(std::string_view versao) const {
    std::string underscored(versao);
    std::replace(underscored.begin(), underscored.end(), '.', '_');
    std::string name = padraoArquivo_;
    if (const std::size_t mark = name.find('%'); mark != std::string::npos)
        name.replace(mark, 1, underscored);
    return name;
}

const TModeloTipo* TEsquemaModelo::Tipo(std::string_view nome) const {
    const auto found = tipoPorNome_.find(nome);
    if (found != tipoPorNome_.end())
        return &tipos_[found->second];
    return compartilhado_ != nullptr && simplesPorNome_.find(nome) == simplesPorNome_.end()
               ? compartilhado_->Tipo(nome)
               : nullptr;
}

const TModeloSimples* TEsquemaModelo::Simples(std::string_view nome) const {
    const auto found = simplesPorNome_.find(nome);
    if (found != simplesPorNome_.end())
        return &simples_[found->second];
    return compartilhado_ != nullptr ? compartilhado_->Simples(nome) : nullptr;
}

const TEsquemaModelo* TEsquemaModelo::Importado(std::string_view prefixo) const {
    const auto found = importados_.find(prefixo);
    return found != importados_.end() ? found->second.get() : nullptr;
}

std::vector<std::shared_ptr<const TEsquemaModelo>> LoadModelos(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    for (auto entry = std::filesystem::directory_iterator(folder, failure);
         !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        if (entry->path().extension() == ".txt" && entry->path().filename() != "LEIAME.txt")
            files.push_back(entry->path());
    if (failure)
        throw EFileNotRead(folder, ReasonText(failure));
    std::sort(files.begin(), files.end());
    std::vector<std::shared_ptr<const TEsquemaModelo>> models;
    for (const std::filesystem::path& file : files)
        if (auto model = TEsquemaModelo::Load(file); !model->Versoes().empty())
            models.push_back(std::move(model));
    return models;
}

} // namespace conferix
