#include "model/arquivo_tiss_factory.h"

#include "model/arquivo_tiss_versions.h"

#include <algorithm>

namespace conferix {

namespace {

#define CONFERIX_TISS_VERSION_ROW(major, minor, patch, Root, prefix, steps)                                  \
    TArquivoTissClass{#major "." #minor "." #patch, Root::kTipoArquivo, TConversionSteps::steps,             \
                      &TArquivoTissV##major##_##minor##_##patch::New},
constexpr TArquivoTissClass kClasses[] = {CONFERIX_TISS_VERSIONS(CONFERIX_TISS_VERSION_ROW)};
#undef CONFERIX_TISS_VERSION_ROW

} // namespace

std::span<const TArquivoTissClass> TArquivoTissFactory::Classes() {
    return kClasses;
}

const TArquivoTissClass* TArquivoTissFactory::GetArquivoTissClass(std::string_view versao) const {
    const auto* found = std::ranges::find(kClasses, versao, &TArquivoTissClass::Versao);
    return found != std::ranges::end(kClasses) ? found : nullptr;
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
