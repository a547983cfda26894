#pragma once

#include "service/http_message.h"
#include "service/multipart.h"

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// What a client sent to be worked on: files, and parameters in the address or in the fields of a form.
class TRequestInput {
  public:
    /// Uses the body of the request up, which has to live as long. Raises EHttpRefusal: 400 for a parameter
    /// that is not among `allowed` and for a body without a file, 413 for too many files, 415 for what is no
    /// XML.
    TRequestInput(THttpRequest& request, std::initializer_list<std::string_view> allowed);

    std::size_t FileCount() const { return parts_.empty() ? 1 : parts_.size(); }
    /// As the client calls it; "-" where it gives no name.
    std::string FileName(std::size_t index) const;
    /// Its bytes, once.
    std::string TakeBytes(std::size_t index);

    /// Empty where it is not given.
    std::string Text(std::string_view parameter) const;
    /// A parameter that is given without a value, with "1", "sim", "true" or "on". Raises EHttpRefusal (400)
    /// for a value that means neither yes nor no.
    bool Flag(std::string_view parameter) const;
    /// Values between commas. Raises EHttpRefusal (400) where one is empty.
    std::vector<std::string> List(std::string_view parameter) const;

  private:
    void ReadForm(std::string_view boundary);

    THttpRequest& request_;
    std::map<std::string, std::string, std::less<>> parameters_;
    std::vector<TFormPart> parts_; ///< the files of a form; empty for a body that is a file itself
};

} // namespace conferix
