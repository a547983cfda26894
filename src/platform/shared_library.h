// Libraries that are loaded when something first needs them.
#pragma once

#include <string>

namespace conferix {

/// A shared library of the system. Once loaded it stays, also after the object.
class TSharedLibrary {
  public:
    /// Loads a library by the name of its file, from where the system keeps libraries.
    explicit TSharedLibrary(const std::string& fileName);

    bool Loaded() const { return handle_ != nullptr; }
    /// Why it was not loaded, in the system's words.
    const std::string& Reason() const { return reason_; }
    /// Address of a function; null when the library has none of that name.
    void* Find(const char* function) const;

  private:
    void* handle_ = nullptr;
    std::string reason_;
};

} // namespace conferix
