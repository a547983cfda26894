// One step of the conversion between versions.
#pragma once

#include "convert/conversion_run.h"
#include "convert/element_change.h"
#include "convert/tree_converter.h"
#include "model/arquivo_tiss.h"
#include "model/text_literal.h"
#include "model/tiss_enums.h"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace conferix {

enum class TConversionDirection : std::uint8_t { Up, Down };

/// Converts the files of one transaction and version to the neighbouring versions.
class IVersionConverter {
  public:
    virtual ~IVersionConverter() = default;
    virtual TEnumTipoTransacaoTiss TipoTransacao() const = 0;
    /// Version from which the step starts.
    virtual std::string_view Version() const = 0;
    /// Version that Up answers; empty for the last one.
    virtual std::string_view NextVersion() const = 0;
    /// Version that Down answers; empty where there is no way down.
    virtual std::string_view PreviousVersion() const = 0;
    /// Converts the document of a file in place and answers its text; empty, with the document as it was,
    /// where there is no such step. Raises EConversionNotSupported.
    std::string Up(const IArquivoTiss& arquivo, TConversionRun& run) const;
    std::string Down(const IArquivoTiss& arquivo, TConversionRun& run) const;
    /// The same without writing the text; false where there is no such step.
    virtual bool Convert(const IArquivoTiss& arquivo, TConversionDirection direction,
                         TConversionRun& run) const = 0;
};

/// A step for lots of guides: what the schemas of both versions say is done alike in all steps; what is
/// special to one stands in its class.
class TTissConverterEnvioLoteGuias : public IVersionConverter {
  public:
    TEnumTipoTransacaoTiss TipoTransacao() const override { return TEnumTipoTransacaoTiss::tmEnvioLoteGuias; }
    /// The neighbours in the list of versions, as far as it has steps to them.
    std::string_view NextVersion() const override;
    std::string_view PreviousVersion() const override;
    bool Convert(const IArquivoTiss& arquivo, TConversionDirection direction,
                 TConversionRun& run) const override;

  protected:
    /// Makes the function that fills in what the target version demands, for one document; it may keep a
    /// state of its own. By default nothing is filled in.
    virtual TFillValue Filler(TConversionDirection direction, TConversionRun& run) const;
    /// What a step does to the document element beyond what the model of the schemas tells.
    virtual void ConvertRoot(TXmlNode& root, TConversionDirection direction, TConversionRun& run) const;

  private:
    const TVersionChange& Change(TConversionDirection direction) const;

    mutable std::mutex mutex_; ///< threads share the steps' changes
    mutable std::unique_ptr<const TVersionChange> up_;
    mutable std::unique_ptr<const TVersionChange> down_;
};

/// The step of one version; what is special to it stands in a specialisation of Filler or ConvertRoot.
template<TTextLiteral Versao>
class TTissConverterEnvioLoteGuiasOf final : public TTissConverterEnvioLoteGuias {
  public:
    std::string_view Version() const override { return Versao.View(); }

  protected:
    TFillValue Filler(TConversionDirection direction, TConversionRun& run) const override {
        return TTissConverterEnvioLoteGuias::Filler(direction, run);
    }
    void ConvertRoot(TXmlNode& root, TConversionDirection direction, TConversionRun& run) const override {
        TTissConverterEnvioLoteGuias::ConvertRoot(root, direction, run);
    }
};

} // namespace conferix
