#pragma once

#include <curl/curl.h>

namespace conferix {

/// The functions of libcurl that the program calls. It brings some thirty other libraries, whose loading
/// takes longer than validating a small file: it is loaded when something is to be fetched.
struct TCurlLibrary {
    /// Loads the library at the first call. Raises EHttp where it is not installed.
    static const TCurlLibrary& Get();

    decltype(&curl_global_init) GlobalInit;
    decltype(&curl_free) Free;
    decltype(&curl_easy_init) EasyInit;
    decltype(&curl_easy_cleanup) EasyCleanup;
    decltype(&curl_easy_reset) EasyReset;
    decltype(&curl_easy_setopt) EasySetopt;
    decltype(&curl_easy_getinfo) EasyGetinfo;
    decltype(&curl_easy_perform) EasyPerform;
    decltype(&curl_easy_strerror) EasyStrerror;
    decltype(&curl_url) Url;
    decltype(&curl_url_cleanup) UrlCleanup;
    decltype(&curl_url_set) UrlSet;
    decltype(&curl_url_get) UrlGet;

  private:
    TCurlLibrary();
};

} // namespace conferix
