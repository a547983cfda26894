#include "model/informations.h"

#include "model/documentos.h"

#include <gmock/gmock.h>

namespace conferix {

using namespace testes;

namespace {

const TFormatSettings kBrasil = TFormatSettings::OfLocale({",", "."});

/// The groups as lines: "[title]" and "label=value".
std::string Texto(const TInformations& groups) {
    std::string text;
    for (const TInformationGroup& group : groups) {
        text += "[" + group.Titulo + "]\n";
        for (const auto& [label, value] : group.Linhas)
            text += fmt::format("{}={}\n", label, value);
    }
    return text;
}

std::string Guias(int count, std::string_view elemento, std::string_view total) {
    std::string guias = "<guiasTISS>";
    for (int i = 0; i < count; ++i)
        guias += fmt::format("<{0}>{1}</{0}>", elemento, total);
    return guias + "</guiasTISS>";
}

TEST(Informacoes, LoteDeGuias) {
    const std::string inicio = "[TISS]\nVersão=3.05.00\nTipo de Transação=ENVIO_LOTE_GUIAS\nHash=abc\n"
                               "[Lote de Guias]\nPrestador=\nOperadora=\nNº do Lote=12\n";
    const struct {
        std::string_view Elemento;
        std::string_view Total;
        int Qtd;
        std::string Resto;
    } kCasos[] = {
        {"guiaConsulta",
         "<registroANS/><dadosAtendimento><procedimento><valorProcedimento>10.004</valorProcedimento></"
         "procedimento>"
         "</dadosAtendimento>",
         2, "Tipo de Guia=Consulta\nQtd Guias=2\nValor Total Informado=R$ 20,01\n"},
        {"guiaSP-SADT", "<valorTotal><valorTotalGeral>1.50</valorTotalGeral></valorTotal>", 1200,
         "Tipo de Guia=SP/SADT\nQtd Guias=1.200\nValor Total Informado=R$ 1.800,00\n"},
        {"guiaResumoInternacao", "", 1,
         "Tipo de Guia=Internação\nQtd Guias=1\nValor Total Informado=R$ 0,00\n"},
        {"guiaHonorarios", "<valorTotalHonorarios>1000000</valorTotalHonorarios>", 1,
         "Tipo de Guia=Honorários\nQtd Guias=1\nValor Total Informado=R$ 1.000.000,00\n"},
        {"guiaOdonto", "<valorTotalProc>1,50</valorTotalProc>", 1,
         "Tipo de Guia=Odontologia\nQtd Guias=1\nValor Total Informado=R$ 0,00\n"},
        {"guiaDesconhecida", "", 3, ""},
    };
    for (const auto& caso : kCasos) {
        const std::string lote = "<numeroLote>12</numeroLote>" + Guias(caso.Qtd, caso.Elemento, caso.Total);
        EXPECT_EQ(Texto(Mensagem("3.05.00", lote)->Informations(kBrasil)), inicio + caso.Resto)
            << caso.Elemento;
    }
    const auto lote = Mensagem(
        "3.05.00", Guias(1000, "guiaHonorarios", "<valorTotalHonorarios>2.5</valorTotalHonorarios>"));
    EXPECT_THAT(Texto(lote->Informations(TFormatSettings::OfLocale({".", ","}))),
                testing::EndsWith("Qtd Guias=1,000\nValor Total Informado=R$ 2,500.00\n"));
}

TEST(Informacoes, SemIndicacaoUsaOsSeparadoresDoUsuario) {
    const auto lote = Mensagem(
        "3.05.00", Guias(1, "guiaHonorarios", "<valorTotalHonorarios>1234.5</valorTotalHonorarios>"));
    EXPECT_THAT(Texto(lote->Informations()),
                testing::HasSubstr("Valor Total Informado=R$ " + TFormatSettings::Regional().Money(1234.5)));
}

TEST(Informacoes, Monitoramento) {
    const std::string inicio = "[TISS]\nVersão=1.06.00\nTipo de Transação=MONITORAMENTO\nHash=def\n"
                               "[Monitoramento]\nOperadora=123456\n";
    const struct {
        std::string_view Competencia;
        std::string_view Conteudo;
        std::string Resto;
    } kCasos[] = {
        {"202301", "<guiaMonitoramento/><guiaMonitoramento/>",
         "Competência=01/2023\nNº do Lote=5\nQtd Guias=2\n"},
        {"2023001", "", "Competência=2023001\nNº do Lote=5\nQtd Guias=0\n"},
        {"20231", "<semMovimentoInclusao>5016</semMovimentoInclusao>",
         "Competência=20231\nNº do Lote=5\nQtd Guias=Sem Movimento\n"},
        {"çã23é1", "", "Competência=é1/çã23\nNº do Lote=5\nQtd Guias=0\n"},
        {"", "", "Competência=\nNº do Lote=5\nQtd Guias=0\n"},
    };
    for (const auto& caso : kCasos) {
        const auto arquivo = ArquivoMonitoramento(
            fmt::format("<numeroLote>5</numeroLote><competenciaLote>{}</competenciaLote>", caso.Competencia),
            caso.Conteudo);
        EXPECT_EQ(Texto(arquivo->Informations(kBrasil)), inicio + caso.Resto) << caso.Competencia;
    }
}

TEST(Informacoes, OutrasTransacoesEArquivosIncompletos) {
    const struct {
        std::string Xml;
        std::string Texto;
    } kCasos[] = {
        {"<mensagemTISS><cabecalho><Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>",
         "[TISS]\nVersão=3.05.00\nTipo de Transação=\nHash=\n"},
        {"<mensagemTISS><cabecalho><identificacaoTransacao><tipoTransacao>OUTRA</tipoTransacao></"
         "identificacaoTransacao>"
         "<Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>",
         "[TISS]\nVersão=3.05.00\nTipo de Transação=OUTRA\nHash=\n"},
        {"<mensagemTISS><cabecalho><identificacaoTransacao><tipoTransacao>ENVIO_LOTE_GUIAS</tipoTransacao>"
         "</identificacaoTransacao><Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>",
         "[TISS]\nVersão=3.05.00\nTipo de Transação=ENVIO_LOTE_GUIAS\nHash=\n"
         "[Lote de Guias]\nPrestador=\nOperadora=\nNº do Lote=\n"},
        {"<mensagemTISS><cabecalho><identificacaoTransacao><tipoTransacao>MONITORAMENTO</tipoTransacao>"
         "</identificacaoTransacao><Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>",
         "[TISS]\nVersão=3.05.00\nTipo de Transação=MONITORAMENTO\nHash=\n"
         "[Monitoramento]\nOperadora=\nCompetência=\nNº do Lote=\nQtd Guias=0\n"},
    };
    for (const auto& caso : kCasos)
        EXPECT_EQ(Texto(Carregado(caso.Xml)->Informations(kBrasil)), caso.Texto) << caso.Xml;
}

} // namespace

} // namespace conferix
