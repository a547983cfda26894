// libcurl as a part of the program, where no system brings it along.
#include "app/curl_library.h"

namespace conferix {

const TCurlLibrary& TCurlLibrary::Get() {
    static const TCurlLibrary library;
    return library;
}

TCurlLibrary::TCurlLibrary()
    : GlobalInit(&curl_global_init), Free(&curl_free), EasyInit(&curl_easy_init),
      EasyCleanup(&curl_easy_cleanup), EasyReset(&curl_easy_reset), EasySetopt(&curl_easy_setopt),
      EasyGetinfo(&curl_easy_getinfo), EasyPerform(&curl_easy_perform), EasyStrerror(&curl_easy_strerror),
      Url(&curl_url), UrlCleanup(&curl_url_cleanup), UrlSet(&curl_url_set), UrlGet(&curl_url_get) {
    GlobalInit(CURL_GLOBAL_DEFAULT);
}

} // namespace conferix
