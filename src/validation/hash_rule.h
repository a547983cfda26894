#pragma once

#include "validation/hash_calculator.h"
#include "validation/solver.h"
#include "validation/validation.h"

namespace conferix {

/// Checks the MD5 hash of the epilogue, and tells which of the two encodings it was made with.
class THashValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
    void Visit(const IMonitoramento& monitoramento) override;
    void Visit(const IMonitoramentoQualidade& qualidade) override;

    /// The digests of the file last visited: of the text that was meant, where its letters were misread.
    const THashes& Hashes() const { return hashes_; }

  private:
    void Check(const std::shared_ptr<const IArquivoTiss>& file);
    /// Of a file whose letters were misread: what its hash is worth once that is mended.
    void CheckMisread(const std::shared_ptr<const IArquivoTiss>& file, const THashes& read,
                      const THashes& meant);

    THashes hashes_;
};

/// Writes the right hash into the epilogue, after cleaning the values if asked.
class THashSolver : public TAbstractSolver {
  public:
    THashSolver(std::shared_ptr<const IArquivoTiss> file, THashEncoding encoding, bool sanitize)
        : TAbstractSolver(std::move(file)), encoding_(encoding), sanitize_(sanitize) {}
    const TXmlNode* Target() const override { return File()->HashNode(); }
    std::optional<std::string> Replacement() const override;
    void Solve() override;

  private:
    THashEncoding encoding_;
    bool sanitize_;
};

class THashSolver_ISO88591 : public THashSolver {
  public:
    explicit THashSolver_ISO88591(std::shared_ptr<const IArquivoTiss> file)
        : THashSolver(std::move(file), THashEncoding::Iso88591, false) {}
    std::string Name() const override { return "THashSolver_ISO88591"; }
    std::string Description() const override {
        return "Corrigir Hash com codificação ISO-8859-1 (recomendado)";
    }
};

class THashSolver_UTF8 : public THashSolver {
  public:
    explicit THashSolver_UTF8(std::shared_ptr<const IArquivoTiss> file)
        : THashSolver(std::move(file), THashEncoding::Utf8, false) {}
    std::string Name() const override { return "THashSolver_UTF8"; }
    std::string Description() const override { return "Corrigir Hash com codificação UTF-8"; }
};

class TSanitizeHashSolver : public THashSolver {
  public:
    explicit TSanitizeHashSolver(std::shared_ptr<const IArquivoTiss> file)
        : THashSolver(std::move(file), THashEncoding::Iso88591, true) {}
    std::string Name() const override { return "TSanitizeHashSolver"; }
    std::string Description() const override;
};

} // namespace conferix
