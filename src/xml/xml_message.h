#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

class ISolver;

/// Severity of a message.
enum class TMessageType : std::uint8_t { mtInformation, mtWarning, mtError, mtFatal, mtSuccess };

/// What a finding speaks of.
enum class TFindingKind : std::uint8_t {
    Value,
    UnknownElement,
    Misplaced, ///< elements or text where they do not belong
    Structure, ///< elements that are missing or misnamed
    Run        ///< the run as a whole; several rules may say it, and the user reads it once
};

/// Identifier of a message or solver: a counter of this process, written as a braced GUID on demand.
class TSequentialId {
  public:
    TSequentialId();
    std::string Text() const;

  private:
    std::uint64_t number_;
};

/// A finding about a place in an XML text; immutable once its solvers are added, and shared.
class TXmlMessage {
  public:
    /// Line and column 1-based, file position 0-based in characters; line 0 means unknown.
    TXmlMessage(TMessageType type, std::string reason, std::string srcText = {}, std::int32_t line = 0,
                std::int32_t linePos = 0, std::int32_t filePos = 0);
    virtual ~TXmlMessage();
    TXmlMessage(const TXmlMessage&) = delete;
    TXmlMessage& operator=(const TXmlMessage&) = delete;

    static std::shared_ptr<TXmlMessage> CreateSuccess(std::string reason, std::string srcText = {},
                                                      std::int32_t line = 0, std::int32_t linePos = 0,
                                                      std::int32_t filePos = 0);
    static std::shared_ptr<TXmlMessage> CreateInfo(std::string reason, std::string srcText = {},
                                                   std::int32_t line = 0, std::int32_t linePos = 0,
                                                   std::int32_t filePos = 0);
    static std::shared_ptr<TXmlMessage> CreateWarn(std::string reason, std::string srcText = {},
                                                   std::int32_t line = 0, std::int32_t linePos = 0,
                                                   std::int32_t filePos = 0);
    static std::shared_ptr<TXmlMessage> CreateError(std::string reason, std::string srcText = {},
                                                    std::int32_t line = 0, std::int32_t linePos = 0,
                                                    std::int32_t filePos = 0);

    std::string Id() const { return id_.Text(); }
    TMessageType MsgType() const { return type_; }
    /// The text shown to the user: prefix (line, and what subclasses add), a blank, reason.
    std::string Msg() const;
    /// What Msg puts before the reason: line, guide and field; empty when nothing is known.
    std::string Place() const { return Prefix(); }
    const std::string& Reason() const { return reason_; }
    const std::string& SrcText() const { return srcText_; }
    std::int32_t Line() const { return line_; }
    std::int32_t LinePos() const { return linePos_; }
    std::int32_t FilePos() const { return filePos_; }
    TFindingKind Kind() const { return kind_; }
    void SetKind(TFindingKind kind) { kind_ = kind; }
    /// Corrections in the order in which they are offered.
    const std::vector<std::shared_ptr<ISolver>>& Solvers() const { return solvers_; }
    void AddSolver(std::shared_ptr<ISolver> solver) { solvers_.push_back(std::move(solver)); }

  protected:
    virtual std::string Prefix() const;

  private:
    TSequentialId id_;
    TMessageType type_;
    TFindingKind kind_ = TFindingKind::Value;
    std::int32_t line_;
    std::int32_t linePos_;
    std::int32_t filePos_;
    std::string reason_;
    std::string srcText_;
    std::vector<std::shared_ptr<ISolver>> solvers_;
};

/// There is one kind of message; callers depend on this name.
using IXmlMessage = TXmlMessage;

using TXmlMessages = std::vector<std::shared_ptr<const TXmlMessage>>;

} // namespace conferix
