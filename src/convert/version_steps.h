// The steps of the chain from 3.02.00 to 4.03.00, one a version.
#pragma once

#include "convert/version_step.h"

#include <memory>
#include <vector>

namespace conferix {

using TTissConverterEnvioLoteGuias_3_02_00 = TTissConverterEnvioLoteGuiasOf<"3.02.00", "", "3.02.01">;

/// The message's signature comes to be the one of XML Signature itself.
class TTissConverterEnvioLoteGuias_3_02_01 final
    : public TTissConverterEnvioLoteGuiasOf<"3.02.01", "3.02.00", "3.02.02"> {
  protected:
    void ConvertRoot(TXmlNode& root, TConversionDirection direction, TConversionRun& run) const override;
};

/// The way back of the message's signature.
class TTissConverterEnvioLoteGuias_3_02_02 final
    : public TTissConverterEnvioLoteGuiasOf<"3.02.02", "3.02.01", "3.03.00"> {
  protected:
    void ConvertRoot(TXmlNode& root, TConversionDirection direction, TConversionRun& run) const override;
};

using TTissConverterEnvioLoteGuias_3_03_00 = TTissConverterEnvioLoteGuiasOf<"3.03.00", "3.02.02", "3.03.01">;
using TTissConverterEnvioLoteGuias_3_03_01 = TTissConverterEnvioLoteGuiasOf<"3.03.01", "3.03.00", "3.03.02">;
using TTissConverterEnvioLoteGuias_3_03_02 = TTissConverterEnvioLoteGuiasOf<"3.03.02", "3.03.01", "3.03.03">;

/// Items come to be numbered within their guide, procedures first, then expenses.
class TTissConverterEnvioLoteGuias_3_03_03 final
    : public TTissConverterEnvioLoteGuiasOf<"3.03.03", "3.03.02", "3.04.00"> {
  protected:
    TFillValue Filler(TConversionDirection direction, TConversionRun& run) const override;
};

using TTissConverterEnvioLoteGuias_3_04_00 = TTissConverterEnvioLoteGuiasOf<"3.04.00", "", "3.04.01">;
using TTissConverterEnvioLoteGuias_3_04_01 = TTissConverterEnvioLoteGuiasOf<"3.04.01", "3.04.00", "3.05.00">;

/// Consultation and SP/SADT guides come to name the attendance regime; the requester's name moves.
class TTissConverterEnvioLoteGuias_3_05_00 final
    : public TTissConverterEnvioLoteGuiasOf<"3.05.00", "3.04.01", "4.00.00"> {
  protected:
    TFillValue Filler(TConversionDirection direction, TConversionRun& run) const override;
};

using TTissConverterEnvioLoteGuias_4_00_00 = TTissConverterEnvioLoteGuiasOf<"4.00.00", "", "4.00.01">;
using TTissConverterEnvioLoteGuias_4_00_01 = TTissConverterEnvioLoteGuiasOf<"4.00.01", "4.00.00", "4.01.00">;
using TTissConverterEnvioLoteGuias_4_01_00 = TTissConverterEnvioLoteGuiasOf<"4.01.00", "4.00.01", "4.02.00">;
using TTissConverterEnvioLoteGuias_4_02_00 = TTissConverterEnvioLoteGuiasOf<"4.02.00", "4.01.00", "4.03.00">;
using TTissConverterEnvioLoteGuias_4_03_00 = TTissConverterEnvioLoteGuiasOf<"4.03.00", "4.02.00", "">;

/// All steps in the order of their versions.
std::vector<std::shared_ptr<const IVersionConverter>> MakeVersionConverters();

} // namespace conferix
