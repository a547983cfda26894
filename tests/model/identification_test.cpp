// What a document is told to be: kind, transaction, version, class; and how it is refused.
#include "model/arquivo_tiss_versions.h"
#include "model/cases.h"
#include "model/tiss_utils.h"

namespace conferix::tests {
namespace {

using enum TEnumTipoArquivoTiss;
using enum TEnumTipoTransacaoTiss;

/// What a call that loads a file ends in.
template<class Load>
std::string Outcome(Load load) {
    try {
        const std::shared_ptr<IArquivoTiss> file = load();
        return fmt::format("{} {} '{}' {}, {}\n", file->Versao(), NameOf(file->TipoArquivo()),
                           file->TextoTipoTransacao(), NameOf(file->TipoTransacao()),
                           file->HashNode() == nullptr ? "sem hash" : fmt::format("hash '{}'", file->Hash()));
    } catch (const EInvalidTissFile& e) {
        return fmt::format("EInvalidTissFile: {}\n", e.what());
    } catch (const ETissVersionNotFound& e) {
        return fmt::format("ETissVersionNotFound: {}\n", e.what());
    } catch (const ETissVersionNotSupported& e) {
        return fmt::format("ETissVersionNotSupported({}): {}\n", e.Versao(), e.what());
    } catch (const ETissMessageNotImplemented& e) {
        return fmt::format("ETissMessageNotImplemented: {}\n", e.what());
    }
}

TEST(Identification, DocumentsAreLoadedOrRefused) {
    ExpectDocuments("identification.casos",
                    [](const std::string& xml) { return Outcome([&] { return LoadTiss(xml); }); });
    EXPECT_EQ(Outcome([] { return TArquivoTissV4_03_00::New(Parsed("<a/>")); }),
              "EInvalidTissFile: O elemento raíz <a> não é reconhecido como sendo de um tipo de arquivo TISS "
              "válido.\n");
}

TEST(Identification, EachTransactionHasItsText) {
    ExpectDocuments("transactions.casos", [](const std::string& xml) {
        return fmt::format("{}\n", NameOf(TArquivoTissBase::GetTipoTransacaoTiss(*Parsed(xml))));
    });
}

TEST(Identification, EachVersionHasItsClass) {
    ExpectCases("versions.casos", [](std::string_view, const auto& lot) {
        std::string text;
        for (const TArquivoTissClass& each : TArquivoTissFactory::Classes()) {
            const bool message = each.Tipo == taMensagemTISS;
            const auto file = LoadTiss(message ? LotText(each.Versao, Xml(lot.first))
                                               : MonitoringText(each.Versao, "", ""));
            text +=
                fmt::format("{} {} {}", file->Versao(), file->GetNamespace(), NameOf(file->TipoArquivo()));
            if (message)
                for (const IGuiaTiss& guia : dynamic_cast<const IMensagemTiss&>(*file).LoteGuias().Guias())
                    text +=
                        fmt::format(" {}/{}", guia.Node()->Parent()->LocalName(), guia.Node()->LocalName());
            else
                EXPECT_NE(dynamic_cast<const IMonitoramento*>(file.get()), nullptr) << each.Versao;
            text += "\n";
        }
        return text;
    });
}

TEST(Identification, HeaderValuesAreReadOfAnyDocument) {
    using TRead = std::string_view (*)(const TXmlDocument&);
    static constexpr std::pair<std::string_view, TRead> kReads[] = {
        {"VersaoTiss2", TTissUtils::VersaoTiss2},
        {"VersaoTiss", TTissUtils::VersaoTiss},
        {"TipoTransacao", TTissUtils::TipoTransacao},
        {"SequencialTransacao", TTissUtils::SequencialTransacao},
        {"DataRegistroTransacao", TTissUtils::DataRegistroTransacao},
        {"HoraRegistroTransacao", TTissUtils::HoraRegistroTransacao},
        {"RegistroANS", TTissUtils::RegistroANS},
        {"IdentificacaoPrestadorCnpj", TTissUtils::IdentificacaoPrestadorCnpj},
        {"IdentificacaoPrestadorCpf", TTissUtils::IdentificacaoPrestadorCpf},
        {"IdentificacaoPrestadorCodigoNaOperadora", TTissUtils::IdentificacaoPrestadorCodigoNaOperadora},
        {"NomeContratado", TTissUtils::NomeContratado},
    };
    ExpectDocuments("header.casos", [](const std::string& xml) {
        std::string text;
        const auto document = Parsed(xml);
        for (const auto& [name, read] : kReads)
            if (const std::string_view value = read(*document); !value.empty())
                text += fmt::format("{}={}\n", name, value);
        return text;
    });
}

TEST(Identification, FileReadsItsDocumentAtEachQuestionAndKeepsIt) {
    std::shared_ptr<IArquivoTiss> file = LoadTiss(MonitoringText("1.06.00", "", ""));
    const std::weak_ptr<TXmlDocument> document = file->Xml();
    file->HashNode()->SetValue("novo");
    EXPECT_EQ(file->Hash(), "novo");
    file->Node()->Find("cabecalho/identificacaoTransacao/tipoTransacao")->SetValue("RECURSO_GLOSA");
    EXPECT_EQ(file->TipoTransacao(), tmRecursoGlosa);
    EXPECT_THROW(file->TipoArquivo(), EInvalidTissFile);
    const std::shared_ptr<const IArquivoTiss> other = file->shared_from_this();
    file.reset();
    EXPECT_FALSE(document.expired());
    EXPECT_EQ(other->Hash(), "novo");

    const auto bare =
        LoadTiss("<mensagemTISS><cabecalho><Padrao>4.00.00</Padrao></cabecalho></mensagemTISS>");
    EXPECT_EQ(bare->Hash(), "");
    EXPECT_EQ(bare->EpilogoNode(), nullptr);
    EXPECT_EQ(dynamic_cast<const IMensagemTiss&>(*bare).LoteGuias().QtdGuias(), 0);
}

} // namespace
} // namespace conferix::tests
