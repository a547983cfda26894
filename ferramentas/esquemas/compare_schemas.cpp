// Compares the schemas that come with the program with the published ones: their tables, and the verdicts of
// three validators on documents made from them, whole and damaged.
//
//     conferix_compare_schemas PASTA-GERADA PASTA-PUBLICADA [DOCUMENTOS]
//
// Every difference is written out; status 0 means that there is none but those that are known. DOCUMENTOS:
// how many documents, over all versions.
#include "schema_comparison.h"
#include "xerces_referee.h"
#include "xml/schema/schema_generator.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_referee.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_parser.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace conferix {
namespace {

constexpr long kDocuments = 20400;
constexpr int kMutantsPerDocument = 9;

/// Where the generated schemas differ on purpose.
struct TDeviation {
    std::string_view Files; ///< beginning of the file's name
    std::string_view Where; ///< end of the difference's path, or what is published
};
constexpr TDeviation kDeviations[] = {
    // A type without name that restricts nothing is replaced by the type that it restricts.
    {"tissV2_", "/valorDesconto (st_valorMonetario): tipo"},
    // No element is of these types.
    {"tissV2_", "tipo derivado ct_diariaProrrogacaoAutorizada"},
    {"tissV3_00_01", "tipo derivado ct_solicitacaoProcedimento"},
    // The sets were published with either edition of the file that names the signature's type; their elements
    // are
    // of the other name, assinaturaDigital.
    {"tissV3_0", "tipo derivado Signature"},
    // XML Signature is imported, but no element refers to it.
    {"tissMonitoramentoQualidadeV", ": elementos globais"},
};

bool IsKnown(const std::string& file, const TSchemaDifference& difference) {
    return std::any_of(std::begin(kDeviations), std::end(kDeviations), [&](const TDeviation& deviation) {
        return file.starts_with(deviation.Files) &&
               (difference.Path.ends_with(deviation.Where) || difference.Published == deviation.Where);
    });
}

/// Compares the tables of a version; number of differences.
int CompareTables(const std::filesystem::path& generated, const std::filesystem::path& published) {
    int count = 0;
    const std::string file = generated.filename().string();
    for (const TSchemaDifference& difference :
         CompareSchemas(*TSchemaSet::Load(published), *TSchemaSet::Load(generated))) {
        if (IsKnown(file, difference))
            continue;
        ++count;
        std::cout << file << ": " << difference.Path << "\n  publicado: " << difference.Published
                  << "\n  gerado:    " << difference.Generated << '\n';
    }
    return count;
}

/// The reasons against a document, empty when it is valid.
std::string OwnReason(const TSchemaSet& set, const std::string& text) {
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    if (parsed.Document == nullptr)
        return "malformado";
    std::string reason;
    for (const TSchemaFault& fault : TSchemaValidator(set).Validate(*parsed.Document))
        reason += TSchemaMessages::Sentence(fault) + "\n";
    return reason;
}

/// Known errors of the referees, in which the other one alone is asked.
/// Xerces-C 3.2 keeps an xsi:nil that stands on an element that only a wildcard admits, and blames the
/// element after it.
bool XercesErrs(const std::string& done) {
    return done == "xsi:nil em <qualquer>";
}
/// libxml2 2.9 takes up its count anew in the second branch of a pattern like [A-Z0-9]{12}[0-9]{2}|[0-9]{11},
/// and so accepts values of 22 digits.
bool LibXmlErrs(const std::string& ours, const std::string& theirs) {
    return theirs.empty() && ours.find("ou um CPF (11 algarismos)") != std::string::npos;
}

/// A referee with the published schema, or with the generated one where it cannot load that.
template<class TReferee>
std::unique_ptr<TReferee> MakeReferee(const std::filesystem::path& published,
                                      const std::filesystem::path& generated) {
    if (std::filesystem::exists(published)) {
        try {
            return std::make_unique<TReferee>(published.string());
        } catch (const std::runtime_error&) {
            std::cout << published.filename().string() << ": não carregado; vale o gerado\n";
        }
    }
    return std::make_unique<TReferee>(generated.string());
}

/// Has documents judged by all three validators; number of differences.
int CompareVerdicts(const std::filesystem::path& generated, const std::filesystem::path& published,
                    long documents) {
    const auto set = TSchemaSet::Load(generated);
    const auto libxml = MakeReferee<TLibXmlReferee>(published, generated);
    const auto xerces = MakeReferee<TXercesReferee>(published, generated);
    long count = 0;
    int differences = 0;
    const auto judge = [&](const std::string& done, const std::string& text) {
        const std::string ours = OwnReason(*set, text);
        const std::string theirs = libxml->Reason(text);
        const std::string others = xerces->Reason(text);
        ++count;
        const bool libxmlAgrees = ours.empty() == theirs.empty();
        const bool xercesAgrees = ours.empty() == others.empty();
        if ((libxmlAgrees || (xercesAgrees && LibXmlErrs(ours, theirs))) &&
            (xercesAgrees || (libxmlAgrees && XercesErrs(done))))
            return;
        ++differences;
        std::cout << done << "\nconferix: " << ours << "\nlibxml2: " << theirs << "\nXerces-C: " << others
                  << '\n'
                  << text << '\n';
    };
    for (std::uint64_t seed = 1; count < documents && differences < 3; ++seed) {
        TSchemaGenerator generator(*set, seed);
        const auto tree = generator.Document();
        judge("documento inteiro", generator.Serialize(*tree));
        for (int i = 0; i < kMutantsPerDocument && count < documents; ++i) {
            const auto mutant = tree->Clone();
            const std::string done = generator.Mutate(*mutant);
            judge(done, generator.Serialize(*mutant));
        }
    }
    return differences;
}

int Run(const std::filesystem::path& generated, const std::filesystem::path& published, long documents) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(generated))
        if (entry.path().extension() == ".xsd" &&
            !entry.path().filename().string().starts_with("tissAssinatura"))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    int differences = 0;
    for (const auto& file : files) {
        const auto other = published / file.filename();
        const int tables = std::filesystem::exists(other) ? CompareTables(file, other) : 0;
        const int verdicts = CompareVerdicts(file, other, documents / static_cast<long>(files.size()) + 1);
        std::cout << file.filename().string() << ": " << tables << " diferenças nas tabelas, " << verdicts
                  << " nos veredictos\n";
        differences += tables + verdicts;
    }
    return differences == 0 ? 0 : 1;
}

} // namespace
} // namespace conferix

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4) {
        std::cerr << "uso: conferix_compare_schemas PASTA-GERADA PASTA-PUBLICADA [DOCUMENTOS]\n";
        return 2;
    }
    try {
        return conferix::Run(argv[1], argv[2],
                             argc == 4 ? std::strtol(argv[3], nullptr, 10) : conferix::kDocuments);
    } catch (const std::exception& error) {
        std::cerr << "conferix_compare_schemas: erro: " << error.what() << '\n';
        return 1;
    }
}
