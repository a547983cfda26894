#include "app/guide_pages.h"
#include "app/tiss_file.h"
#include "forms/pdf_text.h"
#include "support/command_test.h"

#include <gmock/gmock.h>

#include <tuple>

namespace conferix {
namespace {

using testing::HasSubstr;
using testing::Not;

class Imprimir : public TCommandTest {
  protected:
    Imprimir() { options_ = {"--terminologia", CONFERIX_TUSS_DB}; }

    /// Prints and answers the texts of the PDF, in Windows-1252.
    std::string Texts(std::vector<std::string> words, int status = kExitValid) const {
        words.insert(words.begin(), "imprimir");
        const TCommandResult result = Run(std::move(words));
        EXPECT_EQ(result.Status, status) << result.Err;
        return PdfTexts(result.Out);
    }
    static std::size_t Pages(const std::string& texts) {
        std::size_t pages = 0;
        for (std::size_t at = 0; (at = texts.find("P\xE1gina ", at)) != std::string::npos; ++at)
            ++pages;
        return pages;
    }
    std::string spsadt_ = Example("spsadt-3.05.00-valido.xml").string();
    std::string consultas_ = Example("consulta-4.01.00-com-erros.xml").string();
};

TEST_F(Imprimir, PrintsGuidesWithTheirAnnexes) {
    const std::string texts = Texts({spsadt_});
    EXPECT_EQ(Pages(texts), 3U);
    for (const char* text :
         {"2 - N\xBA Guia no Prestador\n", "20000001\n", "13/09/2021\n",
          "HEMOGRAMA COM CONTAGEM DE PLAQUETAS\n", "18,40\n", "44,65\n",
          "ANEXO DE OUTRAS DESPESAS (para Guia de SP/SADT e Resumo de Interna\xE7\xE3o)\n"})
        EXPECT_THAT(texts, HasSubstr(text));
    EXPECT_THAT(texts, Not(HasSubstr("Cont\xE9m erros")));
    const std::string annex = Texts({spsadt_, "--formulario", "outras_despesas"});
    EXPECT_EQ(Pages(annex), 1U);
}

TEST_F(Imprimir, TellsOfErrorsUnlessAskedNotTo) {
    const std::size_t errors = ErrorsOf(Validate(consultas_)).size();
    EXPECT_THAT(Texts({consultas_}), HasSubstr(fmt::format("Cont\xE9m erros: {}\n", errors)));
    EXPECT_THAT(Texts({consultas_, "--sem-aviso"}), Not(HasSubstr("Cont\xE9m")));
}

TEST_F(Imprimir, ChoosesGuidesAndDescribesCodes) {
    const std::string one = Texts({consultas_, "--guia", "10000002", "--com-descricao"});
    EXPECT_EQ(Pages(one), 1U);
    EXPECT_THAT(one, HasSubstr("10000002\n"));
    EXPECT_THAT(one, HasSubstr("9 - N\xE3o acidente\n"));
    EXPECT_EQ(Pages(Texts({consultas_, "--guia", "10000002,77"}, kExitInvalid)), 1U);
    // A number is the provider's; where no guide has it so, the health plan's.
    std::string lot = ReadTestFile(Example("consulta-4.01.00-valido.xml"));
    const std::string file = File("lote.xml");
    const std::string notice = "900000101 é o número na operadora da guia 10000001";
    WriteTestFile(file, lot);
    EXPECT_THAT(Texts({file, "--guia", "900000101"}), HasSubstr("10000001\n"));
    EXPECT_THAT(Run({"imprimir", file, "--guia", "900000101"}).Err, HasSubstr(notice));
    lot.replace(lot.find(">10000002<"), 10, ">900000101<");
    WriteTestFile(file, lot);
    EXPECT_THAT(Texts({file, "--guia", "900000101"}), Not(HasSubstr("10000001\n")));
    EXPECT_THAT(Run({"imprimir", file, "--guia", "900000101"}).Err, Not(HasSubstr(notice)));
}

TEST_F(Imprimir, NumbersEmptyLinesAfterTheLastItem) {
    std::string lot = ReadTestFile(spsadt_);
    for (const char* const number : {"3", "2", "1"}) { // of the first guide
        const std::string item = fmt::format("<ans:sequencialItem>{}<", number);
        lot.replace(lot.find(item), item.size(), fmt::format("<ans:sequencialItem>{}<", *number - '0' + 3));
    }
    WriteTestFile(File("lote.xml"), lot);
    const std::string texts =
        Texts({File("lote.xml"), "--guia", "20000001", "--formulario", "spsadt", "--sem-aviso"});
    const auto count = [&](const std::string& line) {
        std::size_t lines = 0;
        for (std::size_t at = 0; (at = texts.find('\n' + line + '\n', at)) != std::string::npos; ++at)
            ++lines;
        return lines;
    };
    EXPECT_EQ(count("3 -"), 1U); // of the empty table above
    EXPECT_EQ(count("4 -"), 2U);
    EXPECT_EQ(count("7 -"), 1U);
    EXPECT_EQ(count("8 -"), 1U);
    EXPECT_EQ(count("9 -"), 0U);
}

/// Each element of a guide leads to the box that shows it, or to a sentence that says why there is none.
TEST_F(Imprimir, FindsTheBoxOfAPlaceInTheText) {
    for (const char* name :
         {"consulta-4.01.00-valido.xml", "honorarios-4.01.00-valido.xml", "internacao-3.02.00-valido.xml",
          "odonto-3.05.00-valido.xml", "spsadt-3.05.00-valido.xml"}) {
        TGuidePages pages(TTissFile::Read(Example(name)).Load(), std::nullopt, CONFERIX_TUSS_DB);
        for (const TFormGuide& guide : pages.Guides()) {
            const TXmlNode* const root = guide.Node;
            for (const TXmlNode* node = root->NextInWalk(root); node != nullptr;
                 node = node->NextInWalk(root)) {
                if (!node->IsTag() || node->FirstChildTag() != nullptr)
                    continue;
                if (node->LocalName() == "itemVinculado") { // no form shows it
                    EXPECT_THROW(pages.FindBox(node->Line(), node->LinePos()), ENoBox);
                    continue;
                }
                const TBoxPlace box = pages.FindBox(node->Line(), node->LinePos() + 1);
                const TFormPage& page = pages.Page(box.Page);
                const auto place = std::ranges::find(page.Places, node, &TFormPlace::Node);
                ASSERT_NE(place, page.Places.end()) << node->LocalName();
                EXPECT_EQ(place->Frame.Y, box.Frames.front().Y) << node->LocalName();
                if (box.Frames.size() == 1) {
                    EXPECT_THAT(box.Text, testing::EndsWith(place->Box->Label));
                }
                // The blanks before it and behind it are it, too.
                for (const std::int64_t linePos : {std::int64_t{1}, std::int64_t{10'000}})
                    EXPECT_EQ(pages.FindBox(node->Line(), linePos).Text, box.Text) << node->LocalName();
            }
        }
    }
    // A box that is made of several elements is found by each of them.
    std::string old = ReadTestFile(Example("spsadt-2.02.03-valido.xml"));
    const std::string street = "</ansTISS:logradouro>";
    old.insert(old.find(street) + street.size(),
               "\n<ansTISS:numero>12</ansTISS:numero>\n<ansTISS:complemento>CASA 2</ansTISS:complemento>");
    TGuidePages oldPages(TTissFile(old).Load(), std::nullopt, CONFERIX_TUSS_DB);
    const TXmlNode& address = *oldPages.Guides().back().Node->FirstDescendant("enderecoContratado");
    for (const char* part : {"logradouro", "numero", "complemento"}) {
        const TXmlNode& element = *address.Child(part);
        const TBoxPlace box = oldPages.FindBox(element.Line(), element.LinePos());
        EXPECT_EQ(box.Frames.size(), 1U);
        EXPECT_THAT(box.Text, testing::StartsWith("33-34-35 - Logradouro")) << part;
    }
    std::string text = ReadTestFile(spsadt_);
    text.insert(text.find("</ans:dadosBeneficiario>"), "<ans:outro>1</ans:outro>");
    TGuidePages pages(TTissFile(text).Load(), std::nullopt, CONFERIX_TUSS_DB);
    const TXmlNode& guide = *pages.Guides().front().Node;
    const TXmlNode& other = *guide.FirstDescendant("outro");
    // Of an element that holds others, these are pointed out.
    const TXmlNode& header = *guide.FirstChildTag();
    EXPECT_GT(pages.FindBox(header.Line(), header.LinePos()).Frames.size(), 1U);
    for (const auto& [line, linePos, reason] :
         {std::tuple(0, 0, "Este lugar não está em uma guia"), std::tuple(7, 12, "está fora das guias"),
          std::tuple(guide.Line(), guide.LinePos(), "Este lugar é a guia 20000001 por inteiro"),
          std::tuple(other.Line(), other.LinePos(), "O elemento <outro> da guia 20000001 não tem caixa")})
        try {
            pages.FindBox(line, linePos);
            ADD_FAILURE() << reason;
        } catch (const ENoBox& error) {
            EXPECT_THAT(error.what(), HasSubstr(reason));
        }
}

TEST_F(Imprimir, SaysWhatIsWrong) {
    const std::string all =
        "consulta, honorarios, resumo_internacao, spsadt, tratamento_odontologico, outras_despesas";
    const struct {
        std::vector<std::string> Words;
        int Status;
        std::string Error;
    } cases[] = {
        {{}, kExitUsage, "falta o que imprimir: nomes de arquivos, ou --em-branco FORMULARIO"},
        {{spsadt_, "--em-branco", "consulta"},
         kExitUsage,
         "--em-branco imprime um formulário sem guia; não combina com arquivos"},
        {{spsadt_, "--formulario", "recibo"},
         kExitUsage,
         "o formulário \"recibo\" não existe; escolha " + all},
        {{"--em-branco", "consulta", "--versao", "1.00.00"},
         kExitUsage,
         "a versão \"1.00.00\" não existe; conhecidas: 2.01.03"},
        {{spsadt_, "--saida", spsadt_},
         kExitUsage,
         fmt::format("a saída é o próprio \"{}\"; escolha outro arquivo", spsadt_)},
        {{spsadt_, "--formato", "json"},
         kExitUsage,
         "com --formato json, diga onde gravar o PDF: --saida ARQUIVO"},
        {{spsadt_, "--guia", "77"}, kExitInvalid, "nenhum dos arquivos tem a guia 77"},
        {{spsadt_, "--formulario", "consulta"},
         kExitInvalid,
         "não há nada a imprimir: nenhuma guia tem o formulário pedido"},
        {{Example("monitoramento-1.06.00-valido.xml").string()},
         kExitInvalid,
         "o arquivo não tem guias a imprimir; são impressos lotes de guias"},
        {{File("nenhum.xml")}, kExitUnreadable, "nenhum.xml: "},
        {{spsadt_, "--saida", File("pasta/guias.pdf")}, kExitUnreadable, "guias.pdf"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> words = c.Words;
        words.insert(words.begin(), "imprimir");
        const TCommandResult result = Run(words);
        EXPECT_EQ(result.Status, c.Status) << c.Error;
        EXPECT_THAT(result.Err, HasSubstr(c.Error));
        EXPECT_THAT(result.Out, Not(HasSubstr("%PDF")));
    }
}

TEST_F(Imprimir, WritesAFileAndTellsWhatIsInIt) {
    const nlohmann::json told = RunJson({"imprimir", spsadt_, consultas_, "--saida", File("guias.pdf")});
    EXPECT_EQ(told["paginas"], 6);
    EXPECT_EQ(told["arquivos"][0], nlohmann::json({{"arquivo", spsadt_},
                                                   {"guias", 2},
                                                   {"paginas", 3},
                                                   {"semFormulario", nlohmann::json::array()},
                                                   {"erros", 0}}));
    EXPECT_EQ(told["arquivos"][1]["guias"], 3);
    EXPECT_EQ(Pages(PdfTexts(ReadTestFile(File("guias.pdf")))), 6U);
    // One of the two guides has expenses; the file of consultations none.
    const std::vector<std::string> annexes = {"imprimir",        spsadt_,   consultas_,        "--formulario",
                                              "outras_despesas", "--saida", File("anexos.pdf")};
    const nlohmann::json some = RunJson(annexes)["arquivos"];
    EXPECT_EQ(some[0]["guias"], 1);
    EXPECT_EQ(some[0]["semFormulario"], nlohmann::json({"20000001"}));
    EXPECT_EQ(some[1]["guias"], 0);
    const TCommandResult told2 = Run(annexes);
    EXPECT_EQ(told2.Status, kExitValid);
    EXPECT_THAT(told2.Err, testing::AllOf(HasSubstr("1 guia não tem o formulário outras_despesas, e fica de "
                                                    "fora: 20000001\n"),
                                          HasSubstr("3 guias não têm o formulário outras_despesas, e ficam "
                                                    "de fora: 10000001, 10000002, 10000003\n"),
                                          HasSubstr("\n1 guia, 1 página.\n")));
}

TEST_F(Imprimir, PrintsWhatItCannotCheckAndSaysSo) {
    std::filesystem::create_directories(File("esquemas"));
    WriteTestFile(File("esquemas/tissV3_05_00.xsd"), "<schema>");
    const std::vector<std::string> words = {"imprimir",       spsadt_,   "--esquemas",
                                            File("esquemas"), "--saida", File("a.pdf")};
    const TCommandResult unchecked = Run(words);
    EXPECT_EQ(unchecked.Status, kExitUnreadable);
    EXPECT_THAT(unchecked.Err, HasSubstr("o arquivo não pôde ser conferido; as guias são impressas sem a "
                                         "quantidade de erros"));
    EXPECT_EQ(Pages(PdfTexts(ReadTestFile(File("a.pdf")))), 3U);
    std::vector<std::string> unasked = words;
    unasked.emplace_back("--sem-aviso");
    EXPECT_EQ(Run(unasked).Status, kExitValid);
}

TEST_F(Imprimir, UsesTheTemplatesOfTheDataFolder) {
    const std::string empty = Texts({"--em-branco", "consulta"});
    EXPECT_THAT(empty, HasSubstr("26 - Nome Social\n"));
    EXPECT_EQ(Pages(empty), 0U);
    EXPECT_THAT(Texts({"--em-branco", "consulta", "--versao", "3.05.00"}),
                HasSubstr("8 - Cart\xE3o Nacional de Sa\xFA"
                          "de\n"));
    std::filesystem::create_directories(File("dados/formularios"));
    WriteTestFile(File("dados/formularios/consulta.txt"),
                  "guia consulta\nleiaute 3.00.00- retrato\ntitulo \"CONSULTA DA CLÍNICA\"\noperadora "
                  "\"Saúde & Cia.\"\nlinha\n"
                  "  caixa 1 \"Carteira\" 50 valor=dadosBeneficiario/numeroCarteira\n");
    const std::string own = Texts({consultas_});
    EXPECT_THAT(own, HasSubstr("CONSULTA DA CL\xCDNICA\n"));
    EXPECT_THAT(own, HasSubstr("Sa\xFA"
                               "de & Cia.\n"));
    EXPECT_EQ(Pages(own), 3U);
    const std::string logo =
        std::filesystem::absolute(std::filesystem::path(CONFERIX_FONTE) / "docs/imagens/janela.png").string();
    WriteTestFile(File("dados/formularios/consulta.txt"),
                  fmt::format("guia consulta\nleiaute 3.00.00- retrato\nlogotipo \"{0}\"\noperadora "
                              "\"Ao lado\"\nimagem \"{0}\" altura=20 lado=direita\nlinha\n",
                              logo));
    const std::string pdf = Run({"imprimir", consultas_}).Out;
    EXPECT_THAT(pdf, HasSubstr("/Subtype/Image/Width 1282/Height 744"));
    // At the left of the header, as high as that; 20 mm high at the right.
    EXPECT_THAT(PdfStreams(pdf),
                testing::Contains(testing::AllOf(HasSubstr("Ao lado"), HasSubstr("q 55.19 0 0 32.03 18.99 "),
                                                 HasSubstr("q 94.27 0 0 54.71 "))));
    WriteTestFile(File("dados/formularios/consulta.txt"),
                  "guia consulta\nleiaute 3.00.00- retrato\nlinha altura=300\n");
    EXPECT_THAT(Run({"imprimir", consultas_}).Err,
                HasSubstr("consulta.txt, linha 3: \"300\" não é um número de 4 a 200"));
    WriteTestFile(File("dados/formularios/consulta.txt"),
                  "guia consulta\nleiaute 3.00.00- paisagem\nlinha altura=200\n");
    const TCommandResult high = Run({"imprimir", consultas_});
    EXPECT_EQ(high.Status, kExitUnreadable);
    EXPECT_THAT(high.Err,
                HasSubstr("consulta.txt, linha 2: o leiaute tem 212 mm de altura; na folha cabem 197 mm"));
}

} // namespace
} // namespace conferix
