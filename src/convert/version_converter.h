// Conversion of a lot of guides from one version of the standard to another.
#pragma once

#include "convert/conversion_run.h"
#include "convert/version_step.h"
#include "model/arquivo_tiss.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Told after each step: the version reached and the file, whose tree the next step goes on to change.
using TConversionObserver =
    std::function<void(std::string_view versao, const std::shared_ptr<const IArquivoTiss>& arquivo)>;

/// Knows the chain of versions and runs the steps along it.
class TVersionConverter {
  public:
    TVersionConverter();

    /// The steps in the order of their versions.
    const std::vector<std::shared_ptr<const IVersionConverter>>& Converters() const { return *converters_; }
    void SetObserver(TConversionObserver observer) { observer_ = std::move(observer); }

    /// The versions that can be reached upwards or downwards, nearest first.
    std::vector<std::string> NextVersions(TEnumTipoTransacaoTiss type, std::string_view versao) const;
    std::vector<std::string> PreviousVersions(TEnumTipoTransacaoTiss type, std::string_view versao) const;

    /// The text of a file in the target version, with the notes of the way in `run`. The file given stays as
    /// it is. Raises EConversionNotSupported for a file that is no lot, or a target out of reach.
    std::string ConvertUp(const IArquivoTiss& arquivo, std::string_view target, TConversionRun& run) const;
    std::string ConvertDown(const IArquivoTiss& arquivo, std::string_view target, TConversionRun& run) const;
    /// The same in whichever direction the target lies, as the loaded file.
    std::shared_ptr<const IArquivoTiss> Convert(const IArquivoTiss& arquivo, std::string_view target,
                                                TConversionRun& run) const;
    /// Raises EConversionNotSupported unless the file is of a version of the chain and a lot. `target`: as
    /// asked for, for the text of the error; empty when none was.
    void RequireConvertible(const IArquivoTiss& arquivo, std::string_view target) const;

  private:
    const IVersionConverter* FindStep(TEnumTipoTransacaoTiss type, std::string_view versao) const;
    std::shared_ptr<const IArquivoTiss> Run(const IArquivoTiss& arquivo, std::string_view target,
                                            TConversionDirection direction, TConversionRun& run) const;

    std::shared_ptr<const std::vector<std::shared_ptr<const IVersionConverter>>> converters_;
    TConversionObserver observer_;
};

} // namespace conferix
