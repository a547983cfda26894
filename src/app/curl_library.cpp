#include "app/curl_library.h"

#include "app/http_client.h"
#include "platform/shared_library.h"

#include <fmt/format.h>

namespace conferix {

namespace {

template<class Function>
void Find(const TSharedLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.Find(name));
    if (function == nullptr)
        throw EHttp(fmt::format("a biblioteca {} não tem a função {}", CONFERIX_LIBCURL, name));
}

} // namespace

const TCurlLibrary& TCurlLibrary::Get() {
    static const TCurlLibrary library;
    return library;
}

TCurlLibrary::TCurlLibrary() {
    static const TSharedLibrary library(CONFERIX_LIBCURL);
    if (!library.Loaded())
        throw EHttp(fmt::format("a biblioteca {}, usada para acessar a internet, não está instalada ({})",
                                CONFERIX_LIBCURL, library.Reason()));
    Find(library, "curl_global_init", GlobalInit);
    Find(library, "curl_free", Free);
    Find(library, "curl_easy_init", EasyInit);
    Find(library, "curl_easy_cleanup", EasyCleanup);
    Find(library, "curl_easy_reset", EasyReset);
    Find(library, "curl_easy_setopt", EasySetopt);
    Find(library, "curl_easy_getinfo", EasyGetinfo);
    Find(library, "curl_easy_perform", EasyPerform);
    Find(library, "curl_easy_strerror", EasyStrerror);
    Find(library, "curl_url", Url);
    Find(library, "curl_url_cleanup", UrlCleanup);
    Find(library, "curl_url_set", UrlSet);
    Find(library, "curl_url_get", UrlGet);
    GlobalInit(CURL_GLOBAL_DEFAULT);
}

} // namespace conferix
