// Who walks over a TISS file, and the interfaces of what it meets.
#pragma once

namespace conferix {

class TArquivoTissBase;
class TGuiaConsulta;
class TGuiaHonorarios;
class TGuiaMonitoramento;
class TGuiaOdonto;
class TGuiaResumoInternacao;
class TGuiaSpSadt;
class TGuiaTissBase;
class TGuiasTiss;
class TLoteGuiasBase;
class TMensagemTiss;
class TMonitoramento;
class TMonitoramentoQualidade;
class TOutrasDespesasBase;
class TProcedimentosExecutadosBase;

using IArquivoTiss = TArquivoTissBase;
using IMensagemTiss = TMensagemTiss;
using IMonitoramento = TMonitoramento;
using IMonitoramentoQualidade = TMonitoramentoQualidade;
using ILoteGuias = TLoteGuiasBase;
using IGuiasTiss = TGuiasTiss;
using IGuiaTiss = TGuiaTissBase;
using IGuiaConsulta = TGuiaConsulta;
using IGuiaSpSadt = TGuiaSpSadt;
using IGuiaResumoInternacao = TGuiaResumoInternacao;
using IGuiaHonorarios = TGuiaHonorarios;
using IGuiaOdonto = TGuiaOdonto;
using IGuiaMonitoramento = TGuiaMonitoramento;
using IProcedimentosExecutados = TProcedimentosExecutadosBase;
using IOutrasDespesas = TOutrasDespesasBase;

/// Receives the nodes of a file: a node's `Accept` calls the overload of its own kind.
class IArquivoTissVisitor {
  public:
    virtual ~IArquivoTissVisitor() = default;

    virtual void Visit(const IMensagemTiss& mensagem) = 0;
    virtual void Visit(const ILoteGuias& lote) = 0;
    virtual void Visit(const IGuiaConsulta& guia) = 0;
    virtual void Visit(const IGuiaSpSadt& guia) = 0;
    virtual void Visit(const IGuiaResumoInternacao& guia) = 0;
    virtual void Visit(const IGuiaHonorarios& guia) = 0;
    virtual void Visit(const IGuiaOdonto& guia) = 0;
    virtual void Visit(const IMonitoramento& monitoramento) = 0;
    virtual void Visit(const IMonitoramentoQualidade& qualidade) = 0;
    virtual void Visit(const IGuiaMonitoramento& guia) = 0;
};

} // namespace conferix
