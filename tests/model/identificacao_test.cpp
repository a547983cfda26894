// What a document is told to be: kind, transaction, version, class; and how it is refused.
#include "model/arquivo_tiss_versions.h"
#include "model/documentos.h"

#include <set>

namespace conferix {

using namespace testes;
using enum TEnumTipoArquivoTiss;
using enum TEnumTipoTransacaoTiss;

namespace {

std::string Raiz(std::string_view raiz, std::string_view cabecalho) {
    return fmt::format("<{0}><cabecalho>{1}</cabecalho></{0}>", raiz, cabecalho);
}

std::string Transacao(std::string_view texto) {
    return fmt::format("<identificacaoTransacao><tipoTransacao>{}</tipoTransacao></identificacaoTransacao>",
                       texto);
}

/// The name of the exception that a call ends in and its text, or "carregado".
template<class Call>
std::string Desfecho(Call call) {
    try {
        call();
        return "carregado";
    } catch (const EInvalidTissFile& e) {
        return std::string("EInvalidTissFile: ") + e.what();
    } catch (const ETissVersionNotFound& e) {
        return std::string("ETissVersionNotFound: ") + e.what();
    } catch (const ETissVersionNotSupported& e) {
        return "ETissVersionNotSupported(" + e.Versao() + "): " + e.what();
    } catch (const ETissMessageNotImplemented& e) {
        return std::string("ETissMessageNotImplemented: ") + e.what();
    }
}

TEST(Identificacao, OrdemDasVerificacoesETextos) {
    const std::string desconhecida = "ETissVersionNotFound: Versão do TISS não encontrada no arquivo XML.";
    const struct {
        std::string Xml;
        std::string Desfecho;
    } kCasos[] = {
        // A foreign root comes first, whatever the version; its name is told as written.
        {"<nota/>",
         "EInvalidTissFile: O elemento raíz <nota> não é reconhecido como sendo de um tipo de arquivo "
         "TISS válido."},
        {"<!-- a --><x:MensagemTISS "
         "xmlns:x='u'><cabecalho><Padrao>3.05.00</Padrao></cabecalho></x:MensagemTISS>",
         "EInvalidTissFile: O elemento raíz <x:MensagemTISS> não é reconhecido como sendo de um tipo de "
         "arquivo "
         "TISS válido."},
        {Raiz("mensagemEnvioANS", Transacao("ENVIO_LOTE_GUIAS") + "<versaoPadrao>1.06.00</versaoPadrao>"),
         "EInvalidTissFile: O elemento raíz <mensagemEnvioANS> não é reconhecido como sendo de um tipo de "
         "arquivo "
         "TISS válido."},
        {"<mensagemEnvioANS/>",
         "EInvalidTissFile: O elemento raíz <mensagemEnvioANS> não é reconhecido como sendo "
         "de um tipo de arquivo TISS válido."},
        // Then the missing version: without header, without element, with an empty "Padrao" first.
        {"<mensagemTISS/>", desconhecida},
        {Raiz("mensagemTISS", ""), desconhecida},
        {Raiz("mensagemTISS", "<Padrao/><versaoPadrao>3.05.00</versaoPadrao>"), desconhecida},
        {"<mensagemTISS><Padrao>3.05.00</Padrao></mensagemTISS>", desconhecida},
        {Raiz("mensagemEnvioANS", Transacao("MONITORAMENTO")), desconhecida},
        // Then the unknown version, to the letter.
        {Raiz("mensagemTISS", "<Padrao> 3.05.00</Padrao>"),
         "ETissVersionNotSupported( 3.05.00): Versão  3.05.00 do TISS não suportada."},
        {Raiz("mensagemTISS", "<Padrao>3.5.0</Padrao>"),
         "ETissVersionNotSupported(3.5.0): Versão 3.5.0 do TISS não suportada."},
        {Raiz("mensagemTISS", "<Padrao>9.99.99</Padrao><versaoPadrao>3.05.00</versaoPadrao>"),
         "ETissVersionNotSupported(9.99.99): Versão 9.99.99 do TISS não suportada."},
        {Raiz("mensagemEnvioANS", Transacao("QUALIDADE") + "<versaoPadrao>1.06.01</versaoPadrao>"),
         "ETissVersionNotSupported(1.06.01): Versão 1.06.01 do TISS não suportada."},
        // Last a kind that the version does not serve.
        {Raiz("mensagemEnvioANS", Transacao("MONITORAMENTO") + "<versaoPadrao>4.01.00</versaoPadrao>"),
         "ETissMessageNotImplemented: Tipo de arquivo TISS não implementado na versão 4.01.00 do TISS."},
        {Raiz("mensagemTISS", "<versaoPadrao>1.04.01</versaoPadrao>"),
         "ETissMessageNotImplemented: Tipo de arquivo TISS não implementado na versão 1.04.01 do TISS."},
        {Raiz("mensagemEnvioANS", Transacao("QUALIDADE") + "<versaoPadrao>3.03.03</versaoPadrao>"),
         "ETissMessageNotImplemented: Tipo de arquivo TISS não implementado na versão 3.03.03 do TISS."},
        {Raiz("mensagemEnvioANS", Transacao("QUALIDADE") + "<versaoPadrao>1.06.00</versaoPadrao>"),
         "ETissMessageNotImplemented: Tipo de arquivo TISS não implementado na versão 1.06.00 do TISS."},
        {Raiz("mensagemTISS", "<versaoPadrao>9.99.99</versaoPadrao><Padrao>2.01.03</Padrao>"), "carregado"},
    };
    for (const auto& caso : kCasos)
        EXPECT_EQ(Desfecho([&] { Carregado(caso.Xml); }), caso.Desfecho) << caso.Xml;
}

TEST(Identificacao, TipoDeArquivo) {
    const struct {
        std::string Xml;
        TEnumTipoArquivoTiss Tipo;
    } kCasos[] = {
        {"<mensagemTISS/>", taMensagemTISS},
        {Raiz("mensagemTISS", Transacao("MONITORAMENTO")), taMensagemTISS},
        {Raiz("mensagemEnvioANS", Transacao("MONITORAMENTO")), taMonitoramento},
        {Raiz("mensagemEnvioANS", Transacao("QUALIDADE")), taMonitoramentoQualidade},
    };
    for (const auto& caso : kCasos)
        EXPECT_EQ(TArquivoTissBase::GetTipoArquivoTiss(*Documento(caso.Xml)), caso.Tipo) << caso.Xml;
    EXPECT_EQ(NameOf(taMonitoramentoQualidade), "taMonitoramentoQualidade");
}

TEST(Identificacao, TodosOsTextosDeTransacao) {
    const std::pair<std::string_view, std::string_view> kCasos[] = {
        {"MONITORAMENTO", "tmMonitoramento"},
        {"QUALIDADE", "tmMonitoramentoQualidade"},
        {"ENVIO_LOTE_GUIAS", "tmEnvioLoteGuias"},
        {"ENVIO_ANEXO", "tmEnvioLoteAnexos"},
        {"SOLIC_DEMONSTRATIVO_RETORNO", "tmSolicitacaoDemonstrativoRetorno"},
        {"SOLIC_STATUS_PROTOCOLO", "tmSolicitacaoStatusProtocolo"},
        {"SOLICITACAO_PROCEDIMENTOS", "tmSolicitacaoProcedimentos"},
        {"SOLICITA_STATUS_AUTORIZACAO", "tmSolicitacaoStatusAutorizacao"},
        {"VERIFICA_ELEGIBILIDADE", "tmVerificaElegibilidade"},
        {"CANCELA_GUIA", "tmCancelaGuia"},
        {"COMUNICACAO_BENEFICIARIO", "tmComunicacaoBeneficiarioInternacao"},
        {"RECURSO_GLOSA", "tmRecursoGlosa"},
        {"SOLIC_STATUS_RECURSO_GLOSA", "tmSolicitacaoStatusRecursoGlosa"},
        {"PROTOCOLO_RECEBIMENTO", "tmProtocoloRecebimentoLote"},
        {"PROTOCOLO_RECEBIMENTO_ANEXO", "tmProtocoloRecebimentoAnexo"},
        {"RECEBIMENTO_RECURSO_GLOSA", "tmProtocoloRecebimentoRecursoGlosa"},
        {"DEMONSTRATIVO_ANALISE_CONTA", "tmDemonstrativoRetorno"},
        {"DEMONSTRATIVO_PAGAMENTO", "tmDemonstrativoRetorno"},
        {"DEMONSTRATIVO_ODONTOLOGIA", "tmDemonstrativoRetorno"},
        {"SITUACAO_PROTOCOLO", "tmSituacaoProtocolo"},
        {"RESPOSTA_SOLICITACAO", "tmAutorizacaoServicos"},
        {"AUTORIZACAO_ODONTOLOGIA", "tmSituacaoAutorizacao"},
        {"STATUS_AUTORIZACAO", "tmSituacaoAutorizacao"},
        {"SITUACAO_ELEGIBILIDADE", "tmRespostaElegibilidade"},
        {"CANCELAMENTO_GUIA_RECIBO", "tmReciboCancelamentoGuia"},
        {"RECIBO_COMUNICACAO", "tmReciboComunicacao"},
        {"RESPOSTA_RECURSO_GLOSA", "tmRespostaRecursoGlosa"},
        {"envio_lote_guias", "tmDesconhecido"},
        {" ENVIO_LOTE_GUIAS", "tmDesconhecido"},
        {"", "tmDesconhecido"},
    };
    std::set<TEnumTipoTransacaoTiss> valores;
    for (const auto& [texto, nome] : kCasos)
        for (const std::string_view raiz : {"mensagemTISS", "mensagemEnvioANS"}) {
            const TEnumTipoTransacaoTiss valor =
                TArquivoTissBase::GetTipoTransacaoTiss(*Documento(Raiz(raiz, Transacao(texto))));
            EXPECT_EQ(NameOf(valor), nome) << texto;
            valores.insert(valor);
        }
    EXPECT_EQ(valores.size(), 25U);
    EXPECT_EQ(static_cast<int>(tmRespostaRecursoGlosa), 24);
    for (const std::string xml : {"<outra/>", "<mensagemTISS/>", "<mensagemTISS><cabecalho/></mensagemTISS>"})
        EXPECT_EQ(TArquivoTissBase::GetTipoTransacaoTiss(*Documento(xml)), tmDesconhecido) << xml;
}

TEST(Identificacao, TodasAsVersoes) {
    const std::string_view kMensagens[] = {"2.01.03", "2.02.01", "2.02.02", "2.02.03", "3.00.00", "3.00.01",
                                           "3.01.00", "3.02.00", "3.02.01", "3.02.02", "3.03.00", "3.03.01",
                                           "3.03.02", "3.03.03", "3.04.00", "3.04.01", "3.05.00", "4.00.00",
                                           "4.00.01", "4.01.00", "4.02.00", "4.03.00"};
    const std::string_view kMonitoramentos[] = {"1.00.00", "1.00.01", "1.01.00", "1.02.00", "1.03.00",
                                                "1.04.00", "1.04.01", "1.05.00", "1.06.00"};
    std::vector<std::string_view> ordem;
    for (const TArquivoTissClass& classe : TArquivoTissFactory::Classes())
        ordem.push_back(classe.Versao);
    std::vector<std::string_view> esperada(std::begin(kMensagens), std::end(kMensagens));
    esperada.insert(esperada.end(), std::begin(kMonitoramentos), std::end(kMonitoramentos));
    EXPECT_EQ(ordem, esperada);

    for (const std::string_view versao : kMensagens) {
        const auto arquivo = Mensagem(versao, "<numeroLote>7</numeroLote>");
        ASSERT_NE(arquivo, nullptr) << versao;
        EXPECT_EQ(arquivo->Versao(), versao);
        EXPECT_EQ(arquivo->GetNamespace(), versao == "2.02.02" || versao == "2.02.03" ? "ansTISS" : "ans");
        EXPECT_EQ(arquivo->TipoArquivo(), taMensagemTISS);
        EXPECT_EQ(arquivo->LoteGuias().NumeroLote().Text(), "7");
    }
    for (const std::string_view versao : kMonitoramentos) {
        const auto arquivo = Carregado(Monitoramento(versao, "", ""));
        EXPECT_EQ(arquivo->Versao(), versao);
        EXPECT_EQ(arquivo->GetNamespace(), "ans");
        EXPECT_NE(dynamic_cast<const IMonitoramento*>(arquivo.get()), nullptr) << versao;
        EXPECT_EQ(arquivo->TipoTransacao(), tmMonitoramento);
    }
    EXPECT_EQ(TArquivoTissFactory().GetArquivoTissClass("3.5.0"), nullptr);
    EXPECT_NE(dynamic_cast<TArquivoTissV3_05_00*>(Mensagem("3.05.00", "").get()), nullptr);
    EXPECT_EQ(Desfecho([] { TArquivoTissV4_03_00::New(Documento("<a/>")); }),
              "EInvalidTissFile: O elemento raíz <a> não é reconhecido como sendo de um tipo de arquivo TISS "
              "válido.");
}

TEST(Identificacao, QualquerPrefixoEElementosAusentes) {
    for (const std::string prefixo : {"", "ans:", "ansTISS:", "é:"}) {
        const std::string xml = fmt::format(
            "<{0}mensagemTISS {1}><{0}cabecalho><{0}identificacaoTransacao><{0}tipoTransacao>CANCELA_GUIA"
            "</{0}tipoTransacao></{0}identificacaoTransacao><{0}versaoPadrao>3.02.00</{0}versaoPadrao>"
            "</{0}cabecalho><{0}epilogo><{0}hash>AbC </{0}hash></{0}epilogo></{0}mensagemTISS>",
            prefixo, prefixo.empty() ? "" : "xmlns:" + prefixo.substr(0, prefixo.size() - 1) + "='u'");
        const auto arquivo = Carregado(xml);
        EXPECT_EQ(arquivo->Versao(), "3.02.00") << xml;
        EXPECT_EQ(arquivo->TipoTransacao(), tmCancelaGuia);
        EXPECT_EQ(arquivo->Hash(), "AbC ");
    }
    const auto semHash = Carregado(Raiz("mensagemTISS", "<Padrao>4.00.00</Padrao>"));
    EXPECT_EQ(semHash->Hash(), "");
    EXPECT_EQ(semHash->HashNode(), nullptr);
    EXPECT_EQ(semHash->EpilogoNode(), nullptr);
    EXPECT_EQ(semHash->TextoTipoTransacao(), "");
    EXPECT_EQ(dynamic_cast<const IMensagemTiss&>(*semHash).LoteGuias().QtdGuias(), 0);
}

TEST(Identificacao, ArquivoLeODocumentoACadaPerguntaEOMantem) {
    std::shared_ptr<IArquivoTiss> arquivo = Carregado(Monitoramento("1.06.00", "", ""));
    const std::weak_ptr<TXmlDocument> documento = arquivo->Xml();
    arquivo->HashNode()->SetValue("novo");
    EXPECT_EQ(arquivo->Hash(), "novo");
    arquivo->Node()->Find("cabecalho/identificacaoTransacao/tipoTransacao")->SetValue("RECURSO_GLOSA");
    EXPECT_EQ(arquivo->TipoTransacao(), tmRecursoGlosa);
    EXPECT_THROW(arquivo->TipoArquivo(), EInvalidTissFile);
    const std::shared_ptr<const IArquivoTiss> outro = arquivo->shared_from_this();
    arquivo.reset();
    EXPECT_FALSE(documento.expired());
    EXPECT_EQ(outro->Hash(), "novo");
}

TEST(Identificacao, CadaRaizVisitaComoEla) {
    TVisitante visitante;
    const auto mensagem = Mensagem("4.03.00", "");
    mensagem->Accept(visitante);
    mensagem->LoteGuias().Accept(visitante);
    Carregado(Monitoramento("1.06.00", "", ""))->Accept(visitante);
    const auto qualidade = TMonitoramentoQualidade::Create(
        Documento(Raiz("mensagemEnvioANS", Transacao("QUALIDADE") + "<versaoPadrao>3.03.02</versaoPadrao>")));
    qualidade->Accept(visitante);
    EXPECT_EQ(visitante.Visitas, "mensagem lote monitoramento qualidade ");
    EXPECT_EQ(qualidade->Versao(), "3.03.02");
    EXPECT_EQ(qualidade->TipoArquivo(), taMonitoramentoQualidade);
}

} // namespace

} // namespace conferix
