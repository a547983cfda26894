// Reads the guides of a monitoring file, each in one pass over its elements.
#pragma once

#include "rules/monitoring/guia_fields.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <variant>
#include <vector>

namespace conferix {

/// The children of one element that are fields, by local name. For one document: which field a name stands
/// for is looked up once a number of a name (TXmlName::Id), so that no text is compared after the first
/// guide.
template<class Fields>
class TNamedFields {
  public:
    /// What a child is: a field, an element with further fields below it, or one that may stand any number of
    /// times, each of which is handed on. Of the others the first one counts.
    using TTarget = std::variant<TXmlField Fields::*, TNumberField Fields::*, TDateField Fields::*,
                                 bool Fields::*, TNamedFields*, std::function<void(Fields&, TXmlNode&)>>;
    struct TEntry {
        std::string_view Name;
        TTarget Target;
    };

    /// At most 64 entries.
    TNamedFields(std::initializer_list<TEntry> entries) : entries_(entries) {}
    TNamedFields(const TNamedFields&) = delete;
    TNamedFields& operator=(const TNamedFields&) = delete;

    /// Sets the fields that the children of an element hold; leaves the others alone.
    void Read(TXmlNode& parent, Fields& fields);

  private:
    std::uint8_t EntryOf(const TXmlName& name);

    std::vector<TEntry> entries_;
    std::vector<std::uint8_t> byName_; ///< entry or a mark, by number of the name
};

/// Reads guides of one document, one after another.
class TGuiaReader {
  public:
    void Read(const TGuiaMonitoramento& guia, TGuiaFields& fields);

  private:
    using TOfItem = TNamedFields<TItemFields>;
    using TOfGuia = TNamedFields<TGuiaFields>;

    TOfItem procedimento_{{"grupoProcedimento", &TItemFields::GrupoProcedimento},
                          {"codigoProcedimento", &TItemFields::CodigoProcedimento}};
    TOfItem identProcedimento_{{"codigoTabela", &TItemFields::CodigoTabela},
                               {"Procedimento", &procedimento_}};
    TOfItem item_{{"identProcedimento", &identProcedimento_},
                  {"quantidadeInformada", &TItemFields::QuantidadeInformada},
                  {"valorInformado", &TItemFields::ValorInformado},
                  {"quantidadePaga", &TItemFields::QuantidadePaga},
                  {"valorPagoProc", &TItemFields::ValorPagoProc},
                  {"valorPagoFornecedor", &TItemFields::ValorPagoFornecedor},
                  {"CNPJFornecedor", &TItemFields::CNPJFornecedor},
                  {"valorCoParticipacao", &TItemFields::ValorCoParticipacao},
                  {"detalhePacote", &TItemFields::HasPackage}};

    TOfGuia executante_{{"identificadorExecutante", &TGuiaFields::IdentificadorExecutante},
                        {"codigoCNPJ_CPF", &TGuiaFields::CodigoCNPJ_CPF},
                        {"municipioExecutante", &TGuiaFields::MunicipioExecutante}};
    TOfGuia identBeneficiario_{{"numeroCartaoNacionalSaude", &TGuiaFields::NumeroCartaoNacionalSaude},
                               {"sexo", &TGuiaFields::Sexo},
                               {"dataNascimento", &TGuiaFields::DataNascimento},
                               {"municipioResidencia", &TGuiaFields::MunicipioResidencia}};
    TOfGuia beneficiario_{{"identBeneficiario", &identBeneficiario_}};
    TOfGuia valores_{{"valorTotalInformado", &TGuiaFields::ValorTotalInformado},
                     {"valorProcessado", &TGuiaFields::ValorProcessado},
                     {"valorTotalPagoProcedimentos", &TGuiaFields::ValorTotalPagoProcedimentos},
                     {"valorTotalDiarias", &TGuiaFields::ValorTotalDiarias},
                     {"valorTotalTaxas", &TGuiaFields::ValorTotalTaxas},
                     {"valorTotalMateriais", &TGuiaFields::ValorTotalMateriais},
                     {"valorTotalOPME", &TGuiaFields::ValorTotalOPME},
                     {"valorTotalMedicamentos", &TGuiaFields::ValorTotalMedicamentos},
                     {"valorGlosaGuia", &TGuiaFields::ValorGlosaGuia},
                     {"valorPagoGuia", &TGuiaFields::ValorPagoGuia},
                     {"valorPagoFornecedores", &TGuiaFields::ValorPagoFornecedores},
                     {"valorTotalTabelaPropria", &TGuiaFields::ValorTotalTabelaPropria},
                     {"valorTotalCoParticipacao", &TGuiaFields::ValorTotalCoParticipacao}};
    TOfGuia guia_{{"tipoRegistro", &TGuiaFields::TipoRegistro},
                  {"versaoTISSPrestador", &TGuiaFields::VersaoTISSPrestador},
                  {"dadosContratadoExecutante", &executante_},
                  {"dadosBeneficiario", &beneficiario_},
                  {"tipoEventoAtencao", &TGuiaFields::TipoEventoAtencao},
                  {"origemEventoAtencao", &TGuiaFields::OrigemEventoAtencao},
                  {"numeroGuia_prestador", &TGuiaFields::NumeroGuiaPrestador},
                  {"numeroGuia_operadora", &TGuiaFields::NumeroGuiaOperadora},
                  {"identificacaoReembolso", &TGuiaFields::IdentificacaoReembolso},
                  {"dataRealizacao", &TGuiaFields::DataRealizacao},
                  {"dataInicialFaturamento", &TGuiaFields::DataInicialFaturamento},
                  {"dataFimPeriodo", &TGuiaFields::DataFimPeriodo},
                  {"dataProtocoloCobranca", &TGuiaFields::DataProtocoloCobranca},
                  {"dataPagamento", &TGuiaFields::DataPagamento},
                  {"dataProcessamentoGuia", &TGuiaFields::DataProcessamentoGuia},
                  {"tipoConsulta", &TGuiaFields::TipoConsulta},
                  {"caraterAtendimento", &TGuiaFields::CaraterAtendimento},
                  {"tipoInternacao", &TGuiaFields::TipoInternacao},
                  {"regimeInternacao", &TGuiaFields::RegimeInternacao},
                  {"tipoAtendimento", &TGuiaFields::TipoAtendimento},
                  {"tipoFaturamento", &TGuiaFields::TipoFaturamento},
                  {"motivoSaida", &TGuiaFields::MotivoSaida},
                  {"valoresGuia", &valores_},
                  {"procedimentos", [this](TGuiaFields& fields, TXmlNode& node) {
                       TItemFields& item = fields.Itens.emplace_back();
                       item.Item = TProcedimentoMonitoramento(&node);
                       item_.Read(node, item);
                   }}};
};

} // namespace conferix
