#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

class ISolver;
struct TValidationIdentity;

/// Severity of a message.
enum class TMessageType : std::uint8_t { mtInformation, mtWarning, mtError, mtFatal, mtSuccess };

/// Numbers of messages by severity.
class TMessageCounts {
  public:
    std::size_t Of(TMessageType type) const { return counts_[static_cast<std::size_t>(type)]; }
    void Add(TMessageType type, std::size_t count = 1) { counts_[static_cast<std::size_t>(type)] += count; }
    void Remove(TMessageType type) { --counts_[static_cast<std::size_t>(type)]; }
    TMessageCounts& operator+=(const TMessageCounts& other) {
        for (std::size_t i = 0; i < counts_.size(); ++i)
            counts_[i] += other.counts_[i];
        return *this;
    }

    /// Errors, fatal ones included: what makes a file invalid.
    std::size_t Failures() const { return Of(TMessageType::mtError) + Of(TMessageType::mtFatal); }
    std::size_t Warnings() const { return Of(TMessageType::mtWarning); }
    /// All but the successes.
    std::size_t Findings() const { return Failures() + Warnings() + Of(TMessageType::mtInformation); }

  private:
    std::array<std::size_t, 5> counts_{};
};

/// What a finding speaks of.
enum class TFindingKind : std::uint8_t {
    Value,
    UnknownElement,
    Misplaced, ///< elements or text where they do not belong
    Structure, ///< elements that are missing or misnamed
    Layout,    ///< a guide or file that is laid out for another version, or another kind of guide
    Root,      ///< the root, by which the rest of the file is what it is
    Misread,   ///< the file's text as a whole, which was written in another encoding than it declares
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

/// What a message is about, beyond its place in the text; empty where that is not known.
struct TMessageOrigin {
    std::shared_ptr<const TValidationIdentity> Rule; ///< the rule that found it; null for none
    std::string NumeroGuia;                          ///< the guide that it concerns
    std::string Campo;                               ///< field of the regulator's layout, three digits
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
    /// An error or a fatal one: what makes a file invalid.
    bool IsFailure() const { return type_ == TMessageType::mtError || type_ == TMessageType::mtFatal; }
    /// The rule that found it; null for a message that comes from no rule.
    const TValidationIdentity* Rule() const { return origin_.Rule.get(); }
    const std::shared_ptr<const TValidationIdentity>& SharedRule() const { return origin_.Rule; }
    const std::string& NumeroGuia() const { return origin_.NumeroGuia; }
    const std::string& Campo() const { return origin_.Campo; }
    /// What tells its guide from the others of the file: a mark where it has one, else the number; empty
    /// outside of guides.
    const std::string& Guide() const { return guide_.empty() ? origin_.NumeroGuia : guide_; }
    void SetGuide(std::string guide) { guide_ = std::move(guide); }
    /// The text shown to the user: line, guide and field where they are known, a blank, reason.
    std::string Msg() const;
    /// What Msg puts before the reason: "[Linha: 7] [Guia: 123] [Campo: 045]"; empty when nothing is known.
    std::string Place() const;
    /// The item of the guide, as "item 3 (código 40301630)", where the line does not tell it; else empty.
    const std::string& Item() const { return item_; }
    void SetItem(std::string item) { item_ = std::move(item); }
    const std::string& Reason() const { return reason_; }
    const std::string& SrcText() const { return srcText_; }
    std::int32_t Line() const { return line_; }
    std::int32_t LinePos() const { return linePos_; }
    std::int32_t FilePos() const { return filePos_; }
    /// What is wrong, in a form that tells findings of one cause from others wherever they are, a line each
    /// where a message says several things; empty for messages of other rules than those of the schema.
    const std::string& Cause() const { return cause_; }
    void SetCause(std::string cause) { cause_ = std::move(cause); }
    TFindingKind Kind() const { return kind_; }
    void SetKind(TFindingKind kind) { kind_ = kind; }
    /// A number that findings of a rule share which are told as one, whatever the values in their sentences;
    /// 0 where the sentence decides.
    std::uint64_t GroupKey() const { return groupKey_; }
    void SetGroupKey(std::uint64_t key) { groupKey_ = key; }
    /// Corrections in the order in which they are offered.
    const std::vector<std::shared_ptr<ISolver>>& Solvers() const { return solvers_; }
    void AddSolver(std::shared_ptr<ISolver> solver) { solvers_.push_back(std::move(solver)); }

  protected:
    TXmlMessage(TMessageOrigin origin, TMessageType type, std::string reason, std::string srcText,
                std::int32_t line, std::int32_t linePos, std::int32_t filePos);

  private:
    TSequentialId id_;
    TMessageType type_;
    TFindingKind kind_ = TFindingKind::Value;
    std::uint64_t groupKey_ = 0;
    std::int32_t line_;
    std::int32_t linePos_;
    std::int32_t filePos_;
    TMessageOrigin origin_;
    std::string guide_;
    std::string item_;
    std::string reason_;
    std::string srcText_;
    std::string cause_;
    std::vector<std::shared_ptr<ISolver>> solvers_;
};

/// There is one kind of message; callers depend on this name.
using IXmlMessage = TXmlMessage;

using TXmlMessages = std::vector<std::shared_ptr<const TXmlMessage>>;

} // namespace conferix
