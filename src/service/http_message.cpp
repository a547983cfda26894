#include "service/http_message.h"

#include <nlohmann/json.hpp>

namespace conferix {

TServiceAnswer ErrorAnswer(unsigned status, std::string_view text, unsigned retryAfterSeconds) {
    const nlohmann::ordered_json json = {{"status", status}, {"erro", text}};
    TServiceAnswer answer{status, "application/json",
                          json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n'};
    if (retryAfterSeconds != 0)
        answer.Headers.emplace_back("Retry-After", std::to_string(retryAfterSeconds));
    return answer;
}

} // namespace conferix
