#include "model/tiss_utils.h"

#include "model/documentos.h"

namespace conferix {

using namespace testes;

namespace {

std::string Cabecalho(std::string_view raiz, std::string_view conteudo) {
    return fmt::format("<a:{0} xmlns:a='u'><a:cabecalho>{1}</a:cabecalho></a:{0}>", raiz, conteudo);
}

TEST(TissUtils, ValoresDoCabecalhoPeloNomeLocal) {
    const auto documento = Documento(Cabecalho(
        "mensagemTISS",
        "<a:identificacaoTransacao><tipoTransacao>envio</tipoTransacao><a:sequencialTransacao>42</"
        "a:sequencialTransacao>"
        "<a:dataRegistroTransacao>2024-05-06</a:dataRegistroTransacao>"
        "<a:horaRegistroTransacao>10:11:12</a:horaRegistroTransacao></a:identificacaoTransacao>"
        "<a:origem><a:identificacaoPrestador><a:CNPJ>111</a:CNPJ></a:identificacaoPrestador></a:origem>"
        "<a:destino><a:registroANS>333333</a:registroANS></a:destino>"
        "<a:outro><a:identificacaoPrestador><a:CPF>222</a:CPF></a:identificacaoPrestador><a:registroANS>9</"
        "a:registroANS>"
        "<a:identificacaoPrestador><a:codigoPrestadorNaOperadora>c1</a:codigoPrestadorNaOperadora>"
        "<a:CNPJ>444</a:CNPJ></a:identificacaoPrestador></a:outro>"));
    EXPECT_EQ(TTissUtils::TipoTransacao(*documento), "envio");
    EXPECT_EQ(TTissUtils::SequencialTransacao(*documento), "42");
    EXPECT_EQ(TTissUtils::DataRegistroTransacao(*documento), "2024-05-06");
    EXPECT_EQ(TTissUtils::HoraRegistroTransacao(*documento), "10:11:12");
    EXPECT_EQ(TTissUtils::RegistroANS(*documento), "333333");
    EXPECT_EQ(TTissUtils::IdentificacaoPrestadorCnpj(*documento), "111");
    EXPECT_EQ(TTissUtils::IdentificacaoPrestadorCpf(*documento), "222");
    EXPECT_EQ(TTissUtils::IdentificacaoPrestadorCodigoNaOperadora(*documento), "c1");

    const auto vazio = Documento("<mensagemTISS><CNPJ>1</CNPJ></mensagemTISS>");
    for (const auto leitura :
         {TTissUtils::VersaoTiss2, TTissUtils::VersaoTiss, TTissUtils::TipoTransacao,
          TTissUtils::SequencialTransacao, TTissUtils::DataRegistroTransacao,
          TTissUtils::HoraRegistroTransacao, TTissUtils::RegistroANS, TTissUtils::IdentificacaoPrestadorCnpj,
          TTissUtils::IdentificacaoPrestadorCpf, TTissUtils::IdentificacaoPrestadorCodigoNaOperadora,
          TTissUtils::NomeContratado})
        EXPECT_EQ(leitura(*vazio), "");
}

TEST(TissUtils, Versao) {
    const struct {
        std::string Xml;
        std::string_view Versao2;
        std::string_view Versao;
    } kCasos[] = {
        {Cabecalho("mensagemTISS", "<a:Padrao>4.01.00</a:Padrao><a:versaoPadrao>3.02.00</a:versaoPadrao>"),
         "4.01.00", "4.01.00"},
        {Cabecalho("mensagemTISS", "<a:versaoPadrao>3.02.00</a:versaoPadrao><a:Padrao>4.01.00</a:Padrao>"),
         "4.01.00", "3.02.00"},
        {Cabecalho("mensagemTISS", "<versaoPadrao> 3.02.00</versaoPadrao>"), " 3.02.00", " 3.02.00"},
        {Cabecalho("mensagemEnvioANS", "<a:versaoPadrao>1.06.00</a:versaoPadrao>"), "1.06.00", "1.06.00"},
        {Cabecalho("mensagemEnvioANS", "<a:Padrao>1.06.00</a:Padrao>"), "", "1.06.00"},
        {"<x><y><meuPadrao>5</meuPadrao></y><Padrao>6</Padrao></x>", "", "5"},
    };
    for (const auto& caso : kCasos) {
        EXPECT_EQ(TTissUtils::VersaoTiss2(*Documento(caso.Xml)), caso.Versao2) << caso.Xml;
        EXPECT_EQ(TTissUtils::VersaoTiss(*Documento(caso.Xml)), caso.Versao) << caso.Xml;
    }
}

TEST(TissUtils, NomeDoContratadoDoLote) {
    const std::pair<std::string_view, std::string_view> kLotes[] = {
        {"<guiasTISS><guiaConsulta><contratadoExecutante><cnpjContratado>1</cnpjContratado>"
         "<nomeContratado>Clínica A</nomeContratado></contratadoExecutante></guiaConsulta></guiasTISS>",
         "Clínica A"},
        {"<guia><dadosSolicitante><contratadoSolicitante><nomeContratado>Pediu</nomeContratado></"
         "contratadoSolicitante>"
         "</dadosSolicitante><dadosExecutante><contratadoExecutante><codigoPrestadorNaOperadora>1"
         "</codigoPrestadorNaOperadora><nomeContratado>Fez</nomeContratado></contratadoExecutante></"
         "dadosExecutante></guia>",
         "Fez"},
        {"<guia><dadosSolicitante><contratado><nomeContratado>Pediu</nomeContratado></contratado></"
         "dadosSolicitante>"
         "<prestadorExecutante><identificacao><CNPJ>1</CNPJ></identificacao><nomeContratado>Fez</"
         "nomeContratado>"
         "</prestadorExecutante></guia>",
         "Fez"},
        {"<guia><dadosContratadoExecutante><dadosContratado><nomeContratado>Dentista</nomeContratado></"
         "dadosContratado>"
         "</dadosContratadoExecutante></guia>",
         "Dentista"},
        // Fees guides: of 2.x, where the place comes first, and of 3.x, where its name is no answer.
        {"<guia><contratado><nomeContratado>Hospital</nomeContratado></contratado><contratadoExecutante>"
         "<nomeContratado>Médico</nomeContratado></contratadoExecutante></guia>",
         "Hospital"},
        {"<guia><localContratado><nomeContratado>Hospital</nomeContratado></localContratado>"
         "<dadosContratadoExecutante><codigonaOperadora>1</codigonaOperadora><nomeContratadoExecutante>Médico"
         "</nomeContratadoExecutante></dadosContratadoExecutante></guia>",
         "Médico"},
        {"<guia><outro><nomeContratadoExecutante>Solto</nomeContratadoExecutante></outro></guia>", ""},
        {"<guia><dadosExecutante><codigonaOperadora>1</codigonaOperadora><nomeContratado>Lab</nomeContratado>"
         "</dadosExecutante></guia>",
         "Lab"},
        {"<guia><identificacaoExecutante><nomeContratado>Hosp</nomeContratado></identificacaoExecutante></"
         "guia>",
         "Hosp"},
        {"<guia><contratadoExecutante><cnpjContratado>1</cnpjContratado></contratadoExecutante></guia>", ""},
        {"<guia><nomeContratado>Solto</nomeContratado></guia>", ""},
    };
    for (const auto& [lote, nome] : kLotes)
        EXPECT_EQ(TTissUtils::NomeContratado(*Documento(MensagemComLote("3.05.00", lote))), nome) << lote;
    EXPECT_EQ(
        TTissUtils::NomeContratado(*Documento(
            "<m><contratado><nomeContratado>Fora do lote</nomeContratado></contratado><loteGuias/></m>")),
        "");
}

} // namespace

} // namespace conferix
