// Requests and answers, whatever carries them.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A request that was received whole.
struct THttpRequest {
    std::string Method;                       ///< in capitals, as "POST"
    std::string Path;                         ///< to the letter, without the query
    std::map<std::string, std::string> Query; ///< decoded
    std::string ContentType;                  ///< empty where the client names none
    std::string Accept;                       ///< the same
    std::string Body;
};

struct TServiceAnswer {
    unsigned Status = 200;
    std::string ContentType;
    std::string Body;
    std::vector<std::pair<std::string, std::string>> Headers = {}; ///< beyond those that every answer has
};

/// A request that is not answered as asked. The text tells the client why, and what to do.
class EHttpRefusal : public std::runtime_error {
  public:
    EHttpRefusal(unsigned status, const std::string& text) : std::runtime_error(text), status_(status) {}
    unsigned Status() const { return status_; }

  private:
    unsigned status_;
};

/// A refusal as clients read it: an object with "status" and the sentence "erro". `retryAfterSeconds`: when
/// trying again makes sense; 0: the answer does not say.
TServiceAnswer ErrorAnswer(unsigned status, std::string_view text, unsigned retryAfterSeconds = 0);

} // namespace conferix
