// What is asked before a conversion, and how its notes are told.
#pragma once

#include "app/lote_conversion.h"
#include "convert/conversion_run.h"
#include "model/arquivo_tiss.h"
#include "xml/xml_message.h"

#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// What a user has asked for.
struct TConversionRequest {
    std::string Target; ///< version
    TConversionOptions Options;
};

/// The versions to which a file can be converted, and what has to be asked for each.
class TConversionChoice {
  public:
    static constexpr std::string_view kRegimeExplanation =
        "A versão 4 do padrão TISS tornou obrigatório o Regime de Atendimento (tabela 76 da terminologia) "
        "nas "
        "guias de consulta e de SP/SADT. As guias deste arquivo, de uma versão anterior, não o informam. "
        "Como "
        "a conversão deve preencher esse campo?";
    static constexpr std::string_view kMissingRegime = "Informe o valor do Regime de Atendimento";

    /// Raises EConversionNotSupported for a file that is no lot, or that no version can be reached from.
    explicit TConversionChoice(const IArquivoTiss& arquivo);

    const std::string& Versao() const { return versao_; }
    /// The later versions, nearest first, then the earlier ones, nearest first; never empty.
    const std::vector<std::string>& Targets() const { return targets_; }
    /// Whether the way to a target leads to where the attendance regime became mandatory.
    bool AsksRegime(std::string_view target) const;

  private:
    std::string versao_;
    std::vector<std::string> targets_;
};

/// The notes of a conversion as messages about its text: losses and what is left to do are warnings, changes
/// are information. Their places are those of the converted text: of the element, or of what holds it.
TXmlMessages MessagesOf(const TConvertedLote& lote);

} // namespace conferix
