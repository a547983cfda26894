// The difference of two versions of the standard, derived from the model of its schemas.
#pragma once

#include "schema_model/schema_model.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

struct TElementChange;

/// A child to which something happens from one version to the other.
struct TChildChange {
    enum class TWhat : std::uint8_t { Removed, Renamed, Changed };
    std::string Name;
    TWhat What = TWhat::Changed;
    std::string NewName;                    ///< of a renamed one
    const TElementChange* Change = nullptr; ///< of one that stays; null when nothing changes below it
};

/// A child that the target version demands and the source version did not.
struct TDemandedChild {
    std::string Name;
    std::vector<std::string> Codes; ///< the values that it may have; empty when they are not listed
};

/// Names of a value's types in both versions, where the later one does not accept all that the other does.
struct TValueChange {
    std::string From;
    std::string To;
};

/// What becomes of an element, with all below it.
struct TElementChange {
    std::vector<TChildChange> Children;   ///< only those to which something happens
    std::vector<TDemandedChild> Demanded; ///< in the order of the target version
    std::vector<std::string> Order;       ///< children of the target version in order; empty without Demanded
    std::optional<TValueChange> Value;

    bool Nothing() const { return Children.empty() && Demanded.empty() && !Value; }
};

/// The way from one version to another, for the documents of one message that a model describes.
class TVersionChange {
  public:
    /// `messagePath`: path of the element that holds the message, below the document element; of the other
    /// elements on its way, the message alone is looked at where there is a choice. Raises
    /// EInvalidSchemaModel for versions that order the same children differently: a conversion keeps the
    /// order of what stays.
    TVersionChange(std::shared_ptr<const TSchemaModel> modelo, std::string from, std::string to,
                   std::vector<std::string> messagePath);
    TVersionChange(const TVersionChange&) = delete;
    TVersionChange& operator=(const TVersionChange&) = delete;

    const std::string& From() const { return from_; }
    const std::string& To() const { return to_; }
    const TSchemaModel& Modelo() const { return *modelo_; }
    /// Change of the document element; null when nothing changes.
    const TElementChange* Root() const { return root_; }

  private:
    /// A child of a content in one version.
    struct TChild {
        std::string_view Name; ///< local name
        const TModelNode* Node;
        bool Optional;
        bool Alternative; ///< one of a choice
    };
    using TContent = std::vector<TChild>;

    TContent ContentOf(const TModelNode& element, std::string_view versao) const;
    void AddType(TContent& content, const std::string& name, std::string_view versao) const;
    void AddNodes(TContent& content, const std::vector<TModelNode>& nodes, bool optional, bool alternative,
                  std::string_view versao) const;
    void KeepMessage(TContent& content) const;
    const TElementChange* Compare(const TModelNode& from, const TModelNode& to);
    TElementChange CompareContent(const TContent& from, const TContent& to);
    std::optional<TValueChange> CompareValue(const std::string& from, const std::string& to) const;
    bool AcceptsAll(const std::string& from, const std::string& to) const;
    TDemandedChild Demand(const TChild& child) const;

    std::shared_ptr<const TSchemaModel> modelo_;
    std::string from_;
    std::string to_;
    std::vector<std::string> messagePath_;
    std::deque<TElementChange> changes_;
    std::map<std::pair<std::string, std::string>, const TElementChange*> byTypes_; ///< of named types
    const TElementChange* root_ = nullptr;
};

/// The model of the messages between provider and health plan that comes with the program, read once. Raises
/// EInvalidSchemaModel, EFileNotRead.
const std::shared_ptr<const TSchemaModel>& MessageModel();

} // namespace conferix
