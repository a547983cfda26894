// A file's text in another encoding, and what changes by it.
#pragma once

#include "app/tiss_file.h"
#include "app/validador_controller.h"

#include <memory>
#include <string>
#include <vector>

namespace conferix {

/// The text of a file as it is to be written in another encoding ("ISO-8859-1" or "UTF-8"): where it was
/// misread the one that was meant. What was replaced are the words that change, then the characters that the
/// encoding lacks. `held`: as the file was read. Raises EXmlEncoding as RecodeXml does.
TXmlRecoding RecodeFile(const std::string& text, const TXmlEncoding& held, const std::string& encoding);

/// The same for the file that the controller has open, which then holds it in that encoding.
TXmlRecoding HoldInEncoding(TValidadorController& controller, const TTissFile& file,
                            const std::string& encoding);

/// What a recoding replaced, to be read: what is said of several places once, with the lines.
struct TRecodingList {
    std::vector<std::string> Lines;
    std::size_t Further = 0; ///< that are not listed
};
/// `most`: how many lines; 0 for all.
TRecodingList ListRecoding(const TXmlMessages& replaced, std::size_t most);

} // namespace conferix
