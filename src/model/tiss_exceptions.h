// Why a document cannot be taken for a TISS file, in the words that the user reads.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace conferix {

/// Base of the errors of identification.
class ETissException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The document element is none of a TISS file.
class EInvalidTissFile : public ETissException {
  public:
    explicit EInvalidTissFile(std::string_view elementName);
};

/// The header names no version.
class ETissVersionNotFound : public ETissException {
  public:
    ETissVersionNotFound();
};

/// No class serves the version.
class ETissVersionNotSupported : public ETissException {
  public:
    explicit ETissVersionNotSupported(std::string versao);
    /// The version exactly as the file writes it.
    const std::string& Versao() const { return versao_; }

  private:
    std::string versao_;
};

/// The version's class does not serve files of this kind.
class ETissMessageNotImplemented : public ETissException {
  public:
    explicit ETissMessageNotImplemented(std::string_view versao);
};

/// A lot without guides was asked for their kind.
class ELoteGuiasNotFound : public std::runtime_error {
  public:
    ELoteGuiasNotFound();
};

} // namespace conferix
