// Where messages are while the text is being edited.
#pragma once

#include "xml/xml_message.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace conferix {

/// A message and the line on which its place is now.
struct TMessagePlace {
    std::size_t Message; ///< index in the list
    std::int32_t Line;   ///< 1-based
    std::int32_t LinePos;
    TMessageType Type;
};

/// The places of a list of messages, in the order of the text. They move with their lines.
class TMessagePlaces {
  public:
    TMessagePlaces() = default;
    /// Messages without a line have no place.
    explicit TMessagePlaces(const TXmlMessages& messages);

    const std::vector<TMessagePlace>& All() const { return places_; }
    /// Tells that lines were put in after a line (1-based) or, for a negative number, taken out.
    void LinesChanged(std::int32_t line, std::int32_t added);
    /// Line of a message; 0 for one without a place.
    std::int32_t LineOf(std::size_t message) const;
    /// Places [first, second) of `All` on the lines from one to another, both included.
    std::pair<std::size_t, std::size_t> OnLines(std::int32_t first, std::int32_t last) const;

  private:
    std::vector<TMessagePlace> places_;
    std::vector<std::size_t> placeOf_; ///< by message; beyond the places for none
};

} // namespace conferix
