#include "app/servir/service_page.h"

#include "app/servir/page_parts.h"
#include "data/sha256.h"
#include "report/html_style.h"
#include "report/html_text.h"
#include "service/media_type.h"

#include <fmt/format.h>

#include <array>
#include <string>

namespace conferix {

namespace {

/// The stylesheet of reports, since one is shown on the page, and what the page adds.
std::string Style() {
    std::string style = "\n";
    for (const std::string_view part : HtmlStyle())
        style += part;
    style += PageParts()[1];
    return style;
}

/// A page whose policy lets nothing run, be fetched or be shown but what the page itself brings.
TServiceAnswer Page(unsigned status, std::string_view body, std::string_view script) {
    const std::string style = Style();
    std::string policy =
        fmt::format("default-src 'none'; style-src 'sha256-{}'; form-action 'self'; base-uri "
                    "'none'; frame-ancestors 'none'",
                    Sha256Base64(style));
    std::string html =
        fmt::format("<!DOCTYPE html>\n<html lang=\"pt-BR\">\n<head>\n<meta charset=\"utf-8\">\n"
                    "<meta name=\"viewport\" content=\"width=device-width, "
                    "initial-scale=1\">\n<title>Conferix</title>\n<style>{}</style>\n</head>\n"
                    "<body>\n{}",
                    style, body);
    if (!script.empty()) {
        policy += fmt::format("; script-src 'sha256-{}'; connect-src 'self'", Sha256Base64(script));
        html += fmt::format("<script>{}</script>\n", script);
    }
    return {status,
            "text/html; charset=utf-8",
            html + "</body>\n</html>\n",
            {{"Content-Security-Policy", policy}, {"Referrer-Policy", "no-referrer"}}};
}

} // namespace

TServiceAnswer ServicePage(std::size_t bodyBytes) {
    std::string body(PageParts()[0]);
    constexpr std::string_view kForm = "<form id=\"envio\"";
    body.insert(body.find(kForm) + kForm.size(), fmt::format(" data-limite=\"{}\"", bodyBytes));
    return Page(200, body, PageParts()[2]);
}

TServiceAnswer RefusalPage(unsigned status, std::string_view text) {
    return Page(status,
                fmt::format("<header>\n<h1>Conferix</h1>\n</header>\n<main>\n<p class=\"fora\">{}</p>\n"
                            "<p><a href=\"/\">Voltar</a></p>\n</main>\n",
                            HtmlText(text)),
                {});
}

bool IsFromBrowserForm(const THttpRequest& request) {
    const auto type = ParseHeaderValue(request.ContentType);
    constexpr std::array<std::string_view, 2> kOffered = {"application/json", "text/html"};
    return type && type->Value == "multipart/form-data" &&
           PreferredType(request.Accept, kOffered) == std::size_t{1};
}

} // namespace conferix
