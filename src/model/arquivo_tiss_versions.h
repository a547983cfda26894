// The supported versions of the standard: one line each, and its place in the list.
#pragma once

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "model/text_literal.h"
#include "model/tiss_exceptions.h"

#include <memory>
#include <string_view>

namespace conferix {

/// The file of one version: the binding of its document root, which knows the version's number and prefix.
template<TTextLiteral Numero, class Root, TTextLiteral Prefix = "ans">
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

using TArquivoTissV2_01_03 = TArquivoTissVersion<"2.01.03", TMensagemTissV2>;
using TArquivoTissV2_02_01 = TArquivoTissVersion<"2.02.01", TMensagemTissV2>;
using TArquivoTissV2_02_02 = TArquivoTissVersion<"2.02.02", TMensagemTissV2, "ansTISS">;
using TArquivoTissV2_02_03 = TArquivoTissVersion<"2.02.03", TMensagemTissV2, "ansTISS">;
using TArquivoTissV3_00_00 = TArquivoTissVersion<"3.00.00", TMensagemTissV3_00>;
using TArquivoTissV3_00_01 = TArquivoTissVersion<"3.00.01", TMensagemTissV3_00>;
using TArquivoTissV3_01_00 = TArquivoTissVersion<"3.01.00", TMensagemTissV3_01>;
using TArquivoTissV3_02_00 = TArquivoTissVersion<"3.02.00", TMensagemTissV3_02>;
using TArquivoTissV3_02_01 = TArquivoTissVersion<"3.02.01", TMensagemTissV3_02>;
using TArquivoTissV3_02_02 = TArquivoTissVersion<"3.02.02", TMensagemTissV3_02>;
using TArquivoTissV3_03_00 = TArquivoTissVersion<"3.03.00", TMensagemTissV3_02>;
using TArquivoTissV3_03_01 = TArquivoTissVersion<"3.03.01", TMensagemTissV3_02>;
using TArquivoTissV3_03_02 = TArquivoTissVersion<"3.03.02", TMensagemTissV3_02>;
using TArquivoTissV3_03_03 = TArquivoTissVersion<"3.03.03", TMensagemTissV3_02>;
using TArquivoTissV3_04_00 = TArquivoTissVersion<"3.04.00", TMensagemTissV3_02>;
using TArquivoTissV3_04_01 = TArquivoTissVersion<"3.04.01", TMensagemTissV3_02>;
using TArquivoTissV3_05_00 = TArquivoTissVersion<"3.05.00", TMensagemTissV3_02>;
using TArquivoTissV4_00_00 = TArquivoTissVersion<"4.00.00", TMensagemTissV3_02>;
using TArquivoTissV4_00_01 = TArquivoTissVersion<"4.00.01", TMensagemTissV3_02>;
using TArquivoTissV4_01_00 = TArquivoTissVersion<"4.01.00", TMensagemTissV3_02>;
using TArquivoTissV4_02_00 = TArquivoTissVersion<"4.02.00", TMensagemTissV3_02>;
using TArquivoTissV4_03_00 = TArquivoTissVersion<"4.03.00", TMensagemTissV3_02>;
using TArquivoTissV1_00_00 = TArquivoTissVersion<"1.00.00", TMonitoramento>;
using TArquivoTissV1_00_01 = TArquivoTissVersion<"1.00.01", TMonitoramento>;
using TArquivoTissV1_01_00 = TArquivoTissVersion<"1.01.00", TMonitoramento>;
using TArquivoTissV1_02_00 = TArquivoTissVersion<"1.02.00", TMonitoramento>;
using TArquivoTissV1_03_00 = TArquivoTissVersion<"1.03.00", TMonitoramento>;
using TArquivoTissV1_04_00 = TArquivoTissVersion<"1.04.00", TMonitoramento>;
using TArquivoTissV1_04_01 = TArquivoTissVersion<"1.04.01", TMonitoramento>;
using TArquivoTissV1_05_00 = TArquivoTissVersion<"1.05.00", TMonitoramento>;
using TArquivoTissV1_06_00 = TArquivoTissVersion<"1.06.00", TMonitoramento>;

} // namespace conferix
