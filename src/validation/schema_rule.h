#pragma once

#include "validation/validation.h"

#include <filesystem>
#include <stdexcept>

namespace conferix {

/// The schema file that a document needs does not exist.
class ESchemaNotFound : public std::runtime_error {
  public:
    explicit ESchemaNotFound(const std::filesystem::path& file);
    const std::filesystem::path& File() const { return file_; }

  private:
    std::filesystem::path file_;
};

/// True for a schema that comes with the program in place of one that is not at hand. Raises EFileNotRead.
bool IsApproximation(const std::filesystem::path& schemaFile);

/// Checks the whole document against the schema of its kind and version; reports every fault at its place.
/// Raises ESchemaNotFound, and ESchemaInvalido for a set that cannot be loaded.
class TXmlSchemaValidation : public TValidation {
  public:
    /// `schemaFile`: full path of the main XSD file.
    explicit TXmlSchemaValidation(std::filesystem::path schemaFile) : schemaFile_(std::move(schemaFile)) {}
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
    void Visit(const IMonitoramento& monitoramento) override;
    void Visit(const IMonitoramentoQualidade& qualidade) override;

  private:
    void Check(const IArquivoTiss& file, const ILoteGuias* lote);

    std::filesystem::path schemaFile_;
};

} // namespace conferix
