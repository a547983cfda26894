#pragma once

#include "data/tuss_connection.h"
#include "validation/named_validation.h"

#include <filesystem>
#include <memory>
#include <string>

namespace conferix {

/// All rules of billing messages.
class TMensagemTissValidation : public TValidation {
  public:
    /// `schemaFile`: full path of the main XSD file; `tuss`: terminology, may be null where nothing is
    /// visited.
    TMensagemTissValidation(std::string versaoTiss, std::filesystem::path schemaFile,
                            std::shared_ptr<ITussConnection> tuss)
        : versaoTiss_(std::move(versaoTiss)), schemaFile_(std::move(schemaFile)), tuss_(std::move(tuss)) {}
    void CreateValidations() override;
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
    bool Required() const override { return true; }
    std::string_view Name() const override { return "tiss.mensagem"; }
    std::string_view Description() const override { return "Mensagem TISS"; }

  private:
    std::string versaoTiss_;
    std::filesystem::path schemaFile_;
    std::shared_ptr<ITussConnection> tuss_;
};

/// All rules of monitoring files.
class TMonitoramentoValidation : public TValidation {
  public:
    TMonitoramentoValidation(std::shared_ptr<const IArquivoTiss> arquivo, std::filesystem::path schemaFile,
                             std::shared_ptr<ITussConnection> tuss)
        : arquivo_(std::move(arquivo)), schemaFile_(std::move(schemaFile)), tuss_(std::move(tuss)) {}
    void CreateValidations() override;
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
    bool Required() const override { return true; }
    std::string_view Name() const override { return "tiss.monitoramento"; }
    std::string_view Description() const override { return "Monitoramento TISS"; }

  private:
    std::shared_ptr<const IArquivoTiss> arquivo_;
    std::filesystem::path schemaFile_;
    std::shared_ptr<ITussConnection> tuss_;
};

/// All rules of monitoring-quality files.
class TMonitoramentoQualidadeValidation : public TValidation {
  public:
    explicit TMonitoramentoQualidadeValidation(std::filesystem::path schemaFile)
        : schemaFile_(std::move(schemaFile)) {}
    void CreateValidations() override;
    using TValidation::Visit;
    void Visit(const IMonitoramentoQualidade& qualidade) override;
    bool Required() const override { return true; }
    std::string_view Name() const override { return "tiss.qualidade"; }
    std::string_view Description() const override { return "Monitoramento de Qualidade"; }

  private:
    std::filesystem::path schemaFile_;
};

} // namespace conferix
