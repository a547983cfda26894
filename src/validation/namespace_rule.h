#pragma once

#include "validation/validation.h"

namespace conferix {

/// Checks the namespace prefixes written on the tags of the message and of its digital signatures.
class TNamespaceValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
    void Visit(const IMonitoramento& monitoramento) override;
    void Visit(const IMonitoramentoQualidade& qualidade) override;

    /// True when a tag's name contains the name of an XML Signature element that must carry "ds".
    static bool SignatureTagWithRequiredNamespace(std::string_view tagName);

  private:
    void Check(const std::shared_ptr<const IArquivoTiss>& file);
    void JudgeMessageTags(const std::shared_ptr<const IArquivoTiss>& file,
                          const std::vector<std::string_view>& prefixes);
    void JudgeSignatureTags(const std::shared_ptr<const IArquivoTiss>& file);
    /// An error of the file as a whole, with its correction.
    void AddError(const std::shared_ptr<const IArquivoTiss>& file, std::string reason);

    std::vector<std::string_view> signatureTags_; ///< distinct qualified names, in document order
};

} // namespace conferix
