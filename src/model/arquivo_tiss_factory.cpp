#include "model/arquivo_tiss_factory.h"

#include "model/arquivo_tiss_versions.h"

#include <algorithm>
#include <array>

namespace conferix {

namespace {

template<class... Versions>
constexpr std::array<TArquivoTissClass, sizeof...(Versions)> ClassesOf() {
    return {TArquivoTissClass{&Versions::GetVersao, &Versions::New}...};
}

constexpr auto kClasses =
    ClassesOf<TArquivoTissV2_01_03, TArquivoTissV2_02_01, TArquivoTissV2_02_02, TArquivoTissV2_02_03,
              TArquivoTissV3_00_00, TArquivoTissV3_00_01, TArquivoTissV3_01_00, TArquivoTissV3_02_00,
              TArquivoTissV3_02_01, TArquivoTissV3_02_02, TArquivoTissV3_03_00, TArquivoTissV3_03_01,
              TArquivoTissV3_03_02, TArquivoTissV3_03_03, TArquivoTissV3_04_00, TArquivoTissV3_04_01,
              TArquivoTissV3_05_00, TArquivoTissV4_00_00, TArquivoTissV4_00_01, TArquivoTissV4_01_00,
              TArquivoTissV4_02_00, TArquivoTissV4_03_00, TArquivoTissV1_00_00, TArquivoTissV1_00_01,
              TArquivoTissV1_01_00, TArquivoTissV1_02_00, TArquivoTissV1_03_00, TArquivoTissV1_04_00,
              TArquivoTissV1_04_01, TArquivoTissV1_05_00, TArquivoTissV1_06_00>();

} // namespace

std::span<const TArquivoTissClass> TArquivoTissFactory::Classes() {
    return kClasses;
}

const TArquivoTissClass* TArquivoTissFactory::GetArquivoTissClass(std::string_view versao) const {
    const auto* found = std::ranges::find_if(
        kClasses, [versao](const TArquivoTissClass& each) { return each.GetVersao() == versao; });
    return found != kClasses.end() ? found : nullptr;
}

std::shared_ptr<IArquivoTiss>
TArquivoTissFactory::GetNewArquivoTiss(const std::shared_ptr<TXmlDocument>& document) const {
    // A document that is no TISS file is told so before its version is looked for.
    TArquivoTissBase::GetTipoArquivoTiss(*document);
    std::string versao = TArquivoTissBase::GetVersaoTissDetectada(*document);
    const TArquivoTissClass* found = GetArquivoTissClass(versao);
    if (found == nullptr)
        throw ETissVersionNotSupported(std::move(versao));
    return found->New(document);
}

} // namespace conferix
