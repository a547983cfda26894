#include "validation/validation.h"

namespace conferix {

namespace {

void CollectIdentities(const TValidation& validation, bool recursive,
                       std::vector<IValidationIdentity>& found) {
    for (const auto& child : validation.Validations()) {
        found.push_back(child->Identity());
        if (recursive)
            CollectIdentities(*child, recursive, found);
    }
}

} // namespace

const IValidationIdentity& TValidation::Identity() const {
    if (identity_ == nullptr)
        identity_ = std::make_shared<TValidationIdentity>(
            TValidationIdentity{std::string(Name()), std::string(Description()), Required()});
    return identity_;
}

std::vector<IValidationIdentity> TValidation::Validations(bool recursive) const {
    std::vector<IValidationIdentity> found;
    CollectIdentities(*this, recursive, found);
    return found;
}

} // namespace conferix
