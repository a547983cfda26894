// The supported versions of the standard, one row each.
#pragma once

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "model/text_literal.h"
#include "model/tiss_exceptions.h"

#include <memory>
#include <string_view>

namespace conferix {

/// The file of one version: the binding of its document root, which knows the version's number and prefix.
template<TTextLiteral Numero, class Root, TTextLiteral Prefix>
class TArquivoTissVersion final : public Root {
  public:
    /// The version that this class serves, as "3.05.00".
    static constexpr std::string_view GetVersao() { return Numero.View(); }
    /// Loads a document. Raises ETissMessageNotImplemented when the version does not serve its kind of file,
    /// EInvalidTissFile when it is no TISS file.
    static std::shared_ptr<IArquivoTiss> New(std::shared_ptr<TXmlDocument> document) {
        if (TArquivoTissBase::GetTipoArquivoTiss(*document) != Root::kTipoArquivo)
            throw ETissMessageNotImplemented(GetVersao());
        return std::shared_ptr<IArquivoTiss>(new TArquivoTissVersion(std::move(document)));
    }

    std::string_view Versao() const override { return GetVersao(); }
    std::string_view GetNamespace() const override { return Prefix.View(); }

  private:
    using Root::Root;
};

using TMensagemTissV2 = TMensagemTissOf<kLoteGuiasV2>;
using TMensagemTissV3_00 = TMensagemTissOf<kLoteGuiasV3_00>;
using TMensagemTissV3_01 = TMensagemTissOf<kLoteGuiasV3_01>;
using TMensagemTissV3_02 = TMensagemTissOf<kLoteGuiasV3_02>;

// One row a version, in the order in which they are searched: the parts of its number, the root of its
// documents, the prefix of its elements, and the steps by which lots of guides are converted from it
// (TConversionSteps).
// clang-format off
#define CONFERIX_TISS_VERSIONS(VERSION)                   \
    VERSION(2, 01, 03, TMensagemTissV2, "ans", None)      \
    VERSION(2, 02, 01, TMensagemTissV2, "ans", None)      \
    VERSION(2, 02, 02, TMensagemTissV2, "ansTISS", None)  \
    VERSION(2, 02, 03, TMensagemTissV2, "ansTISS", None)  \
    VERSION(3, 00, 00, TMensagemTissV3_00, "ans", None)   \
    VERSION(3, 00, 01, TMensagemTissV3_00, "ans", None)   \
    VERSION(3, 01, 00, TMensagemTissV3_01, "ans", None)   \
    VERSION(3, 02, 00, TMensagemTissV3_02, "ans", Up)     \
    VERSION(3, 02, 01, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 02, 02, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 03, 00, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 03, 01, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 03, 02, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 03, 03, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 04, 00, TMensagemTissV3_02, "ans", Up)     \
    VERSION(3, 04, 01, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(3, 05, 00, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(4, 00, 00, TMensagemTissV3_02, "ans", Up)     \
    VERSION(4, 00, 01, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(4, 01, 00, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(4, 02, 00, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(4, 03, 00, TMensagemTissV3_02, "ans", UpDown) \
    VERSION(1, 00, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 00, 01, TMonitoramento, "ans", None)       \
    VERSION(1, 01, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 02, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 03, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 04, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 04, 01, TMonitoramento, "ans", None)       \
    VERSION(1, 05, 00, TMonitoramento, "ans", None)       \
    VERSION(1, 06, 00, TMonitoramento, "ans", None)
// clang-format on

#define CONFERIX_TISS_VERSION_CLASS(major, minor, patch, Root, prefix, steps)                                \
    using TArquivoTissV##major##_##minor##_##patch =                                                         \
        TArquivoTissVersion<#major "." #minor "." #patch, Root, prefix>;
CONFERIX_TISS_VERSIONS(CONFERIX_TISS_VERSION_CLASS)
#undef CONFERIX_TISS_VERSION_CLASS

} // namespace conferix
