// The steps of the chain of conversions, one a version.
#pragma once

#include "convert/version_step.h"
#include "model/arquivo_tiss_versions.h"

#include <memory>
#include <vector>

namespace conferix {

// What a step does beyond what the schemas of its two versions tell.

/// The message's signature comes to be the one of XML Signature itself.
template<>
void TTissConverterEnvioLoteGuiasOf<"3.02.01">::ConvertRoot(TXmlNode& root, TConversionDirection direction,
                                                            TConversionRun& run) const;
/// The way back of the message's signature.
template<>
void TTissConverterEnvioLoteGuiasOf<"3.02.02">::ConvertRoot(TXmlNode& root, TConversionDirection direction,
                                                            TConversionRun& run) const;
/// Items come to be numbered within their guide, procedures first, then expenses.
template<>
TFillValue TTissConverterEnvioLoteGuiasOf<"3.03.03">::Filler(TConversionDirection direction,
                                                             TConversionRun& run) const;
/// Consultation and SP/SADT guides come to name the attendance regime; the requester's name moves.
template<>
TFillValue TTissConverterEnvioLoteGuiasOf<"3.05.00">::Filler(TConversionDirection direction,
                                                             TConversionRun& run) const;

// One class for each version that the list of versions has steps for.
#define CONFERIX_STEP_None(name, number)
#define CONFERIX_STEP_Up(name, number) using name = TTissConverterEnvioLoteGuiasOf<number>;
#define CONFERIX_STEP_UpDown(name, number) using name = TTissConverterEnvioLoteGuiasOf<number>;
#define CONFERIX_STEP(major, minor, patch, Root, prefix, steps)                                              \
    CONFERIX_STEP_##steps(TTissConverterEnvioLoteGuias_##major##_##minor##_##patch,                          \
                          #major "." #minor "." #patch)
CONFERIX_TISS_VERSIONS(CONFERIX_STEP)
#undef CONFERIX_STEP
#undef CONFERIX_STEP_None
#undef CONFERIX_STEP_Up
#undef CONFERIX_STEP_UpDown

/// All steps in the order of their versions.
std::vector<std::shared_ptr<const IVersionConverter>> MakeVersionConverters();

} // namespace conferix
