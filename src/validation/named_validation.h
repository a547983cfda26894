#pragma once

#include "model/text_literal.h"
#include "validation/validation.h"

namespace conferix {

/// A rule under the name and description of one place in the tree: what makes the same check appear once a
/// kind of file or guide.
template<class Base, TTextLiteral name, TTextLiteral description>
class TNamedValidation : public Base {
  public:
    using Base::Base;
    std::string_view Name() const override { return name.View(); }
    std::string_view Description() const override { return description.View(); }
};

} // namespace conferix
