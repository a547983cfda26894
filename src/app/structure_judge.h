// What a schema says of a text before and after some corrections.
#pragma once

#include "app/execute_solver.h"
#include "validation/structure_solver.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace conferix {

/// The corrections of one stage that a text offers, at most one a finding. Tries any of them together, each
/// time on a tree of its own. Corrections that can disturb each other are of one group.
class TStructureJudge {
  public:
    using TXmlPtr = std::shared_ptr<const std::string>;
    /// True for a correction that is to be tried.
    using TAdmits = std::function<bool(const TXmlMessage&, const TStructureSolver&)>;

    /// How the errors that all rules find in a text are asked for.
    struct TErrorsAsked {
        std::function<TValidateArgs(const TXmlPtr&)> Find; ///< in AllMessages; empty: not asked for
        std::function<bool(const TXmlMessage&)> WillStay;  ///< false for one that is corrected later
    };

    /// `checked`: what the schema says of the text; taken over when the judge tries for the first time.
    /// `errors`: where they are asked for, a corrected text must not have more of those that will stay than
    /// before, nor as many of them and more of the others.
    TStructureJudge(const TValidadorController& controller, TXmlPtr xml, TValidateArgs& checked,
                    TAdmits admits, TErrorsAsked errors);

    std::size_t Count() const { return groups_.size(); }
    std::size_t GroupOf(std::size_t candidate) const { return groups_[candidate]; }

    /// Why corrections are not right.
    struct TObjection {
        std::string Reason = "o arquivo ficaria com outro erro"; ///< as the end of a sentence
        std::string NewError = {};                               ///< a sentence; empty where no error is new
        bool IsCorrectable = false; ///< corrections of rules would take away what is new
    };

    /// What came of a try.
    struct TVerdict {
        TXmlPtr Xml;                                  ///< the corrected text
        TValidateArgs Checked;                        ///< what the schema says of it
        std::vector<TCorrectionRecord> Records;       ///< of the chosen, in their order
        bool Right = false;                           ///< all their findings are gone, and no error is new
        std::map<std::size_t, TObjection> Objections; ///< why not, by group; empty where no group is to blame
        TObjection Whole;                             ///< why not, where no group is to blame
    };
    /// `chosen`: ascending.
    TVerdict Try(const std::vector<std::size_t>& chosen);
    /// The records of corrections that are not applied.
    std::vector<TCorrectionRecord> RecordsOf(const std::vector<std::size_t>& candidates);
    /// Makes the schema's word on the text, which tries use up, whole again.
    void Restore() { Fresh(); }

  private:
    struct TPicked {
        std::shared_ptr<const TXmlMessage> Message;
        std::shared_ptr<TStructureSolver> Solver;
    };
    /// Findings of one cause: how many, and in which groups.
    struct TFound {
        std::size_t Count = 0;
        std::map<std::size_t, std::size_t> Groups;
        std::map<std::size_t, const TXmlMessage*> Last; ///< of a group; as long as its validation
    };
    using TCauses = std::map<std::string, TFound, std::less<>>;
    using TScopes = std::unordered_map<const TXmlNode*, std::size_t>; ///< group by element

    static constexpr std::size_t kNoGroup = static_cast<std::size_t>(-1);

    /// The candidates on a tree that nothing has changed yet.
    const std::vector<TPicked>& Fresh();
    void MakeGroups();
    TScopes ScopesOf(const std::vector<TPicked>& picked) const;
    static std::size_t GroupAround(const TXmlNode* node, const TScopes& scopes);
    /// Counts the findings by cause. `tree`: where they are looked up by the number of their tag; the checked
    /// document itself, or the one from which its text was written.
    static TCauses Count(const TValidateArgs& checked, const TXmlDocument& tree, const TScopes& scopes);
    /// Numbers of errors: of those that will stay, and of all.
    using TErrorCount = std::pair<std::size_t, std::size_t>;
    /// Errors that say the same.
    struct TSentence {
        std::size_t Count = 0;
        const TXmlMessage* Last = nullptr; ///< as long as its validation
    };
    struct TErrorsOfGroup {
        TErrorCount Number;
        std::map<std::string, TSentence, std::less<>> Sentences;
    };
    using TErrors = std::map<std::size_t, TErrorsOfGroup>; ///< by group
    TErrors CountErrors(const TValidateArgs& found, const TXmlDocument& tree, const TScopes& scopes) const;
    static TErrorsOfGroup SumOf(const TErrors& errors);
    static TObjection MoreErrors(const TErrorsOfGroup& before, const TErrorsOfGroup& after);
    void CompareErrors(const TErrors& after, TVerdict& verdict) const;
    void Compare(const TCauses& after, const std::vector<std::size_t>& chosen, TVerdict& verdict) const;

    const TValidadorController& controller_;
    TXmlPtr xml_;
    TAdmits admits_;
    TValidateArgs& checked_;
    bool used_ = false; ///< the tree of checked_ was changed
    std::vector<TPicked> picked_;
    std::vector<std::size_t> groups_;
    std::vector<std::vector<std::string>> causesOf_;
    TCauses before_;
    TErrorsAsked errors_;
    std::optional<TErrors> errorsBefore_;
};

} // namespace conferix
