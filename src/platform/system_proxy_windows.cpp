// What the Internet options of Windows say of proxies.
#include "platform/platform.h"
#include "platform/system_proxy.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include <windows.h>

#include <shlwapi.h>
#include <winhttp.h>

namespace conferix {

namespace {

struct TFree {
    void operator()(wchar_t* text) const { GlobalFree(text); }
};
using TText = std::unique_ptr<wchar_t, TFree>;

struct TClose {
    void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};

std::wstring_view View(const TText& text) {
    return text != nullptr ? std::wstring_view(text.get()) : std::wstring_view();
}

std::wstring_view HostOf(std::wstring_view url) {
    const std::size_t scheme = url.find(L"://");
    if (scheme != std::wstring_view::npos)
        url.remove_prefix(scheme + 3);
    return url.substr(0, url.find_first_of(L":/?#"));
}

// Entries are "server:port" for all, or "https=server:port".
std::wstring_view EntryOf(std::wstring_view list, std::wstring_view scheme) {
    while (!list.empty()) {
        const std::size_t end = list.find_first_of(L"; ");
        const std::wstring_view entry = list.substr(0, end);
        const std::size_t equals = entry.find(L'=');
        if (equals == std::wstring_view::npos && !entry.empty())
            return entry;
        if (equals != std::wstring_view::npos && entry.substr(0, equals) == scheme)
            return entry.substr(equals + 1);
        list.remove_prefix(std::min(list.size(), entry.size() + 1));
    }
    return {};
}

bool IsBypassed(const std::wstring& host, const TText& list) {
    return list != nullptr && (PathMatchSpecExW(host.c_str(), list.get(), PMSF_MULTIPLE) == S_OK ||
                               (View(list).find(L"<local>") != std::wstring_view::npos &&
                                host.find(L'.') == std::wstring::npos));
}

// By the script of the network, where there is one; null where it was not found.
bool AskScript(const std::wstring& url, const TText& script, bool detects, TText& proxy) {
    const std::unique_ptr<void, TClose> session(
        WinHttpOpen(L"Conferix", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0));
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = (detects ? WINHTTP_AUTOPROXY_AUTO_DETECT : DWORD{0}) |
                      (script != nullptr ? WINHTTP_AUTOPROXY_CONFIG_URL : DWORD{0});
    options.dwAutoDetectFlags = detects ? WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A : 0;
    options.lpszAutoConfigUrl = script.get();
    options.fAutoLogonIfChallenged = TRUE;
    WINHTTP_PROXY_INFO info{};
    if (session == nullptr || !WinHttpGetProxyForUrl(session.get(), url.c_str(), &options, &info))
        return false;
    proxy.reset(info.lpszProxy);
    const TText bypass(info.lpszProxyBypass);
    return true;
}

} // namespace

std::string SystemProxy(const std::string& url) {
    for (const char* variable : {"https_proxy", "http_proxy", "all_proxy"})
        if (!GetEnvironment(variable).empty())
            return {};
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG settings{};
    if (!WinHttpGetIEProxyConfigForCurrentUser(&settings))
        return {};
    const TText script(settings.lpszAutoConfigUrl);
    const TText bypass(settings.lpszProxyBypass);
    TText proxy(settings.lpszProxy);
    const std::wstring address = PathFromText(url).wstring();
    const bool automatic = settings.fAutoDetect || script != nullptr;
    if (!automatic || !AskScript(address, script, settings.fAutoDetect != FALSE, proxy)) {
        if (IsBypassed(std::wstring(HostOf(address)), bypass))
            return {};
    }
    const std::wstring_view scheme = std::wstring_view(address).substr(0, address.find(L':'));
    return PathText(std::wstring(EntryOf(View(proxy), scheme)));
}

} // namespace conferix
