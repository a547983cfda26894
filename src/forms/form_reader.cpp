#include "forms/form_template.h"

#include "platform/platform.h"
#include "platform/share_folder.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <map>
#include <optional>

namespace conferix {

namespace {

constexpr std::pair<std::string_view, TFormFormat> kFormats[] = {
    {"texto", TFormFormat::Text},
    {"inteiro", TFormFormat::Integer},
    {"quantidade", TFormFormat::Quantity},
    {"fator", TFormFormat::Factor},
    {"valor", TFormFormat::Money},
    {"data", TFormFormat::Date},
    {"hora", TFormFormat::Time},
    {"datahora", TFormFormat::DateTime},
    {"sn", TFormFormat::YesNo},
    {"codigo", TFormFormat::Code},
    {"linha", TFormFormat::Line},
    {"assinatura", TFormFormat::Signature},
};

constexpr std::string_view kGuides[] = {"consulta", "spsadt", "resumo_internacao", "honorarios",
                                        "tratamento_odontologico"};

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (true) {
        const std::size_t at = text.find(separator);
        parts.emplace_back(text.substr(0, at));
        if (at == std::string_view::npos)
            return parts;
        text.remove_prefix(at + 1);
    }
}

/// Reads the lines of a template one after the other.
class TFormReader {
  public:
    TFormReader(const std::string& name, const std::string& fileName) : fileName_(fileName) {
        form_->Name = name;
        form_->Title = name;
        form_->FileName = fileName;
    }

    std::shared_ptr<const TFormTemplate> Read(std::string_view text) {
        for (const std::string& line : Split(text, '\n')) {
            ++line_;
            Take(line);
        }
        if (form_->Guides.empty())
            Fail("falta dizer de que guia é o formulário: guia consulta");
        if (form_->Variants.empty())
            Fail("o formulário não tem nenhum leiaute, como: leiaute 3.00.00-3.05.00 retrato");
        return form_;
    }

  private:
    using TAttribute = std::function<void(std::string_view)>;

    [[noreturn]] void Fail(const std::string& reason) const { throw EInvalidForm(fileName_, line_, reason); }

    /// Words of the line, of which one in quotation marks may hold blanks.
    std::vector<std::string> Words(std::string_view line) const {
        std::vector<std::string> words;
        for (std::size_t at = 0; at < line.size();) {
            if (line[at] == ' ' || line[at] == '\t' || line[at] == '\r') {
                ++at;
                continue;
            }
            if (line[at] == '#')
                break;
            const bool quoted = line[at] == '"';
            const std::size_t end = quoted ? line.find('"', at + 1) : line.find_first_of(" \t\r", at);
            if (quoted && end == std::string_view::npos)
                Fail("faltam aspas no fim de um texto");
            words.emplace_back(line.substr(
                at + (quoted ? 1 : 0), end == std::string_view::npos ? end : end - at - (quoted ? 1 : 0)));
            at = end == std::string_view::npos ? line.size() : end + (quoted ? 1 : 0);
        }
        return words;
    }

    void Take(std::string_view line) {
        words_ = Words(line);
        if (words_.empty())
            return;
        next_ = 1;
        static const std::map<std::string_view, void (TFormReader::*)()> kKeywords = {
            {"formulario", &TFormReader::TakeForm}, {"guia", &TFormReader::TakeGuides},
            {"anexo", &TFormReader::TakeAnnex},     {"leiaute", &TFormReader::TakeVariant},
            {"titulo", &TFormReader::TakeTitle},    {"operadora", &TFormReader::TakeOperator},
            {"numero", &TFormReader::TakeNumber},   {"secao", &TFormReader::TakeSection},
            {"linha", &TFormReader::TakeRow},       {"caixa", &TFormReader::TakeBox},
            {"tabela", &TFormReader::TakeTable},    {"coluna", &TFormReader::TakeColumn},
            {"faixa", &TFormReader::TakeBand},      {"serie", &TFormReader::TakeSeries},
            {"texto", &TFormReader::TakeText},      {"logotipo", &TFormReader::TakeLogo},
            {"imagem", &TFormReader::TakeImage},
        };
        const auto keyword = kKeywords.find(words_.front());
        if (keyword == kKeywords.end()) {
            std::vector<std::string_view> known;
            known.reserve(kKeywords.size());
            for (const auto& [name, take] : kKeywords)
                known.push_back(name);
            Fail(fmt::format("\"{}\" não é conhecido no começo de uma linha; conhecidos: {}", words_.front(),
                             fmt::join(known, ", ")));
        }
        (this->*keyword->second)();
        if (next_ < words_.size())
            Fail(fmt::format("\"{}\" não era esperado aqui", words_[next_]));
    }

    std::string Word(const char* what) {
        if (next_ == words_.size())
            Fail(fmt::format("falta {}", what));
        return words_[next_++];
    }

    float Number(std::string_view text, float from, float to) const {
        int value = 0;
        int tenths = 0;
        const char* const end = text.data() + text.size();
        auto read = std::from_chars(text.data(), end, value);
        if (read.ec == std::errc() && read.ptr != end && *read.ptr == '.' && end - read.ptr == 2)
            read = std::from_chars(read.ptr + 1, end, tenths);
        const float number = static_cast<float>(value) + static_cast<float>(tenths) / 10.0F;
        if (read.ec != std::errc() || read.ptr != end || number < from || number > to)
            Fail(fmt::format("\"{}\" não é um número de {} a {}, com uma casa decimal no máximo", text, from,
                             to));
        return number;
    }

    TFormPath Path(std::string_view text) const {
        if (text == ".") // the item itself
            return {};
        TFormPath path = Split(text, '/');
        if (std::ranges::any_of(path, [](const std::string& step) { return step.empty(); }))
            Fail(fmt::format("\"{}\" não é um caminho, como dadosBeneficiario/numeroCarteira", text));
        return path;
    }

    TFormVersions Versions(std::string_view text) const {
        const auto check = [&](const std::string& version) {
            const bool form = version.size() == 7 && version[1] == '.' && version[4] == '.';
            if (!version.empty() && !form)
                Fail(fmt::format("\"{}\" não é uma versão nem um intervalo, como 3.00.00-3.05.00", text));
            return version;
        };
        const std::size_t dash = text.find('-');
        if (dash == std::string_view::npos)
            return {check(std::string(text)), std::string(text)};
        return {check(std::string(text.substr(0, dash))), check(std::string(text.substr(dash + 1)))};
    }

    /// Takes the rest of the line: chave=valor, and a range of versions in brackets.
    void TakeAttributes(const std::map<std::string_view, TAttribute>& known,
                        TFormVersions* versions = nullptr) {
        for (; next_ < words_.size(); ++next_) {
            const std::string_view word = words_[next_];
            if (versions != nullptr && word.starts_with('[') && word.ends_with(']')) {
                *versions = Versions(word.substr(1, word.size() - 2));
                continue;
            }
            const std::size_t equals = word.find('=');
            const auto attribute = known.find(word.substr(0, equals));
            if (equals == std::string_view::npos || attribute == known.end()) {
                std::vector<std::string_view> names;
                names.reserve(known.size());
                for (const auto& [name, take] : known)
                    names.push_back(name);
                Fail(fmt::format("\"{}\" não é conhecido aqui; conhecidos: {}", word.substr(0, equals),
                                 fmt::join(names, ", ")));
            }
            attribute->second(word.substr(equals + 1));
        }
    }

    TFormVariant& Variant() {
        if (form_->Variants.empty())
            Fail("antes vem o leiaute, como: leiaute 3.00.00-3.05.00 retrato");
        return form_->Variants.back();
    }
    template<class Block>
    Block& Last(const char* reason) {
        TFormVariant& variant = Variant();
        Block* block = variant.Blocks.empty() ? nullptr : std::get_if<Block>(&variant.Blocks.back());
        if (block == nullptr)
            Fail(reason);
        return *block;
    }

    void TakeForm() { form_->Title = Word("o nome do formulário"); }

    void TakeGuides() {
        do {
            form_->Guides.push_back(Word("o tipo da guia"));
            if (std::ranges::find(kGuides, form_->Guides.back()) == std::end(kGuides))
                Fail(fmt::format("\"{}\" não é um tipo de guia; conhecidos: {}", form_->Guides.back(),
                                 fmt::join(kGuides, ", ")));
        } while (next_ < words_.size());
    }

    void TakeAnnex() {
        form_->Needs = Path(Word("o elemento que a guia precisa ter"));
        form_->NeedsSourceLine = line_;
    }

    void TakeVariant() {
        TFormVariant variant;
        variant.SourceLine = line_;
        variant.Versions = Versions(Word("o intervalo de versões"));
        const std::string paper = Word("a orientação, retrato ou paisagem");
        if (paper != "retrato" && paper != "paisagem")
            Fail(fmt::format("\"{}\" não é uma orientação; conhecidas: retrato, paisagem", paper));
        variant.Landscape = paper == "paisagem";
        form_->Variants.push_back(std::move(variant));
    }

    void TakeTitle() { Variant().Title = Word("o título"); }
    void TakeLogo() { Variant().Logo = Image(); }
    void TakeOperator() { Variant().Operator = Word("o nome da operadora"); }

    void TakeNumber() {
        TFormVariant& variant = Variant();
        variant.GuideNumber = Box(false);
    }

    void TakeSection() { Variant().Blocks.emplace_back(TFormSection{Word("o título da seção")}); }

    void TakeRow() {
        TFormRow row;
        row.Height = 6.4F;
        TakeAttributes({{"altura", [&](std::string_view v) { row.Height = Number(v, 4, 200); }},
                        {"folha", [&](std::string_view v) { row.LastPage = OneOf(v, "ultima", "todas"); }},
                        {"fundo", [&](std::string_view v) { row.Grey = OneOf(v, "cinza", "branco"); }}});
        Variant().Blocks.emplace_back(std::move(row));
    }

    bool OneOf(std::string_view value, std::string_view yes, std::string_view no) const {
        if (value != yes && value != no)
            Fail(fmt::format("\"{}\" não é conhecido aqui; conhecidos: {}, {}", value, yes, no));
        return value == yes;
    }

    void TakeBox() {
        auto& boxes = Last<TFormRow>("uma caixa vem depois de uma linha: linha altura=6.4").Boxes;
        boxes.push_back(Box(true));
        CheckWidths(boxes);
    }

    void TakeTable() {
        TFormTable table;
        table.Height = 3.2F;
        table.SourceLine = line_;
        table.Bands.emplace_back();
        TakeAttributes(
            {{"itens", [&](std::string_view v) { table.Items = Path(v); }},
             {"linhas", [&](std::string_view v) { table.Lines = static_cast<int>(Number(v, 1, 100)); }},
             {"altura", [&](std::string_view v) { table.Height = Number(v, 2.5F, 50); }}});
        if (table.Lines == 0)
            Fail("falta a quantidade de linhas por folha, como linhas=5");
        Variant().Blocks.emplace_back(std::move(table));
    }

    void TakeColumn() {
        auto& columns = Last<TFormTable>("uma coluna vem depois de uma tabela: tabela linhas=5").Bands.back();
        columns.push_back(Box(true));
        CheckWidths(columns);
    }

    void TakeBand() {
        Last<TFormTable>("uma faixa vem depois de uma tabela: tabela linhas=5").Bands.emplace_back();
    }

    void TakeSeries() {
        TFormSeries series;
        series.Number = Word("o número da caixa");
        series.Label = Word("o rótulo");
        series.Places = 10;
        series.Height = 10;
        TakeAttributes(
            {{"lugares", [&](std::string_view v) { series.Places = static_cast<int>(Number(v, 2, 20)); }},
             {"altura", [&](std::string_view v) { series.Height = Number(v, 6, 50); }}});
        Variant().Blocks.emplace_back(std::move(series));
    }

    void TakeText() {
        TFormText text;
        text.Text = Word("o texto");
        text.Height = 8;
        TakeAttributes({{"altura", [&](std::string_view v) { text.Height = Number(v, 3, 200); }}});
        Variant().Blocks.emplace_back(std::move(text));
    }

    void TakeImage() {
        TFormImage image;
        image.Image = Image();
        image.Height = 12;
        TakeAttributes({{"altura", [&](std::string_view v) { image.Height = Number(v, 3, 200); }},
                        {"lado", [&](std::string_view v) {
                             constexpr std::string_view kSides[] = {"esquerda", "centro", "direita"};
                             const auto* side = std::ranges::find(kSides, v);
                             if (side == std::end(kSides))
                                 Fail(fmt::format("\"{}\" não é conhecido aqui; conhecidos: {}", v,
                                                  fmt::join(kSides, ", ")));
                             image.Across = static_cast<TAcross>(side - std::begin(kSides));
                         }}});
        Variant().Blocks.emplace_back(std::move(image));
    }

    /// Reads a picture of the template's folder.
    std::shared_ptr<const TPaperImage> Image() {
        const std::string name = Word("o arquivo da imagem, PNG ou JPEG");
        const std::filesystem::path file = PathFromText(fileName_).parent_path() / PathFromText(name);
        try {
            auto& known = images_[file];
            if (known == nullptr)
                known = ReadImage(ReadWholeFile(file));
            return known;
        } catch (const EFileNotRead& error) {
            Fail(fmt::format("a imagem \"{}\": {}", name, error.Reason()));
        } catch (const EInvalidImage& error) {
            Fail(fmt::format("a imagem \"{}\" {}", name, error.what()));
        }
    }

    /// Number, label, width and the rest of a box.
    TFormBox Box(bool withWidth) {
        TFormBox box;
        box.SourceLine = line_;
        box.Number = Word("o número da caixa, ou -");
        if (box.Number == "-")
            box.Number.clear();
        box.Label = Word("o rótulo entre aspas");
        if (withWidth)
            box.Width = Number(Word("a largura em porcentagem"), 1, 100);
        const auto paths = [&](std::string_view v, char separator, TFormCombination combination) {
            box.Combination = combination;
            for (const std::string& path : Split(v, separator))
                box.Paths.push_back(Path(path));
        };
        const auto value = [&](std::string_view v) {
            const bool all = v.find('+') != std::string_view::npos;
            paths(v, all ? '+' : '|', all ? TFormCombination::All : TFormCombination::First);
        };
        const auto terms = [&](std::string_view v) {
            for (const std::string& path : Split(v, ','))
                box.Term.push_back(Path(path));
            if (box.Term.size() != 2)
                Fail("termo=TABELA,CODIGO espera dois caminhos");
        };
        const auto format = [&](std::string_view v) {
            const auto* found =
                std::ranges::find(kFormats, v, &std::pair<std::string_view, TFormFormat>::first);
            if (found == std::end(kFormats)) {
                std::vector<std::string_view> names;
                for (const auto& [name, known] : kFormats)
                    names.push_back(name);
                Fail(fmt::format("o formato \"{}\" não é conhecido; conhecidos: {}", v,
                                 fmt::join(names, ", ")));
            }
            box.Format = found->second;
        };
        TakeAttributes(
            {{"valor", value},
             {"soma", [&](std::string_view v) { paths(v, '+', TFormCombination::Sum); }},
             {"formato", format},
             {"tamanho", [&](std::string_view v) { box.Size = static_cast<int>(Number(v, 1, 2000)); }},
             {"codigos",
              [&](std::string_view v) { box.Codes = Split(v, ','), box.Format = TFormFormat::Code; }},
             {"termo", terms},
             {"ocorrencia",
              [&](std::string_view v) {
                  box.Occurrence = v == "todas" ? 0 : static_cast<int>(Number(v, 1, 100));
              }}},
            &box.Versions);
        return box;
    }

    void CheckWidths(const std::vector<TFormBox>& boxes) const {
        float sum = 0;
        for (const TFormBox& box : boxes)
            if (box.Versions.First.empty() && box.Versions.Last.empty())
                sum += box.Width;
        if (sum > 100.05F)
            Fail(fmt::format("as caixas da linha somam {:.1f}% da largura; o máximo é 100%", sum));
    }

    std::string fileName_;
    int line_ = 0;
    std::shared_ptr<TFormTemplate> form_ = std::make_shared<TFormTemplate>();
    std::vector<std::string> words_;
    std::size_t next_ = 0;
    std::map<std::filesystem::path, std::shared_ptr<const TPaperImage>> images_; ///< those that were read
};

void ReadFolder(const std::filesystem::path& folder, std::map<std::string, std::filesystem::path>& files) {
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing))
        if (entry.path().extension() == ".txt" && entry.is_regular_file())
            files[PathText(entry.path().stem())] = entry.path();
}

} // namespace

EInvalidForm::EInvalidForm(const std::string& file, int line, const std::string& reason)
    : std::runtime_error(fmt::format("{}, linha {}: {}", file, line, reason)) {}

bool TFormVersions::Contains(std::string_view version) const {
    return (First.empty() || version >= First) && (Last.empty() || version <= Last);
}

const TFormVariant* TFormTemplate::VariantFor(std::string_view version) const {
    const auto found = std::ranges::find_if(
        Variants, [&](const TFormVariant& variant) { return variant.Versions.Contains(version); });
    return found != Variants.end() ? &*found : nullptr;
}

std::shared_ptr<const TFormTemplate> ParseForm(std::string_view text, const std::string& name,
                                               const std::string& fileName) {
    return TFormReader(name, fileName).Read(text);
}

TFormSet LoadForms(const std::filesystem::path& delivered, const std::filesystem::path& replacing) {
    std::map<std::string, std::filesystem::path> files;
    ReadFolder(delivered, files);
    if (!replacing.empty())
        ReadFolder(replacing, files);
    TFormSet forms;
    for (const auto& [name, file] : files) {
        forms.push_back(ParseForm(ReadWholeFile(file), name, PathText(file)));
        if (file.parent_path() == replacing)
            CheckPaths(*forms.back());
    }
    std::stable_partition(forms.begin(), forms.end(), [](const auto& form) { return !form->IsAnnex(); });
    return forms;
}

TFormSet InstalledForms() {
    std::filesystem::path own;
    try {
        own = DataFolder() / "formularios";
    } catch (const EDataFolderUnknown&) { // who has no data folder has no templates in it
    }
    return LoadForms(ShareFolder() / "formularios", own);
}

} // namespace conferix
