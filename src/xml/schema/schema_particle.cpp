#include "xml/schema/schema_particle.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <unordered_map>

namespace conferix {

namespace {

constexpr std::size_t kMaxPositions = 20'000;
constexpr std::size_t kMaxEdges = 2'000'000;
constexpr std::size_t kMaxAllPositions = 64;

std::string NameOf(const TSchemaPosition& position) {
    return position.Element != nullptr ? "<" + position.Element->Name + ">" : std::string("xs:any");
}

/// Positions as a model starts and ends with them (Glushkov's construction).
struct TFragment {
    std::vector<std::uint32_t> First;
    std::vector<std::uint32_t> Last;
    bool Nullable = true;
};

class TAutomatonBuilder {
  public:
    TSchemaAutomaton Build(const TSchemaParticle& particle) {
        const TFragment whole = BuildRepeated(particle);
        SortEdges(whole);
        CheckAmbiguity();
        return Finish(whole);
    }

  private:
    TFragment BuildRepeated(const TSchemaParticle& particle) {
        using TKind = TSchemaParticle::TKind;
        if (particle.Max == 0)
            return {};
        if (particle.Kind == TKind::Element || particle.Kind == TKind::Wildcard)
            return BuildLeaf(particle);
        if (particle.Kind == TKind::All)
            throw ESchemaContentModel("xs:all só pode ser o conteúdo inteiro de um tipo");
        if (particle.Max != 1 && particle.Max != kSchemaUnbounded)
            throw ESchemaContentModel("grupo com maxOccurs=\"" + std::to_string(particle.Max) +
                                      "\" não é suportado");
        TFragment body = BuildOnce(particle);
        if (particle.Max != 1)
            Loop(body);
        body.Nullable = body.Nullable || !particle.Required;
        return body;
    }

    TFragment BuildLeaf(const TSchemaParticle& particle) {
        if (positions_.size() >= kMaxPositions)
            throw ESchemaContentModel("o conteúdo tem elementos demais");
        const auto index = static_cast<std::uint32_t>(positions_.size());
        positions_.push_back({particle.Element, particle.Wildcard, particle.Required, particle.Max});
        follow_.emplace_back();
        return {{index}, {index}, !particle.Required};
    }

    TFragment BuildOnce(const TSchemaParticle& particle) {
        if (particle.Kind == TSchemaParticle::TKind::Sequence) {
            TFragment result;
            for (const auto& child : particle.Children)
                result = Concatenate(std::move(result), BuildRepeated(*child));
            return result;
        }
        TFragment result;
        result.Nullable = false;
        for (const auto& child : particle.Children) {
            TFragment branch = BuildRepeated(*child);
            Append(result.First, branch.First);
            Append(result.Last, branch.Last);
            result.Nullable = result.Nullable || branch.Nullable;
        }
        return result;
    }

    TFragment Concatenate(TFragment left, TFragment right) {
        for (const std::uint32_t position : left.Last)
            Link(position, right.First);
        if (left.Nullable)
            Append(left.First, right.First);
        if (right.Nullable)
            Append(right.Last, left.Last);
        return {std::move(left.First), std::move(right.Last), left.Nullable && right.Nullable};
    }

    void Loop(const TFragment& body) {
        for (const std::uint32_t position : body.Last)
            Link(position, body.First);
    }

    void Link(std::uint32_t position, const std::vector<std::uint32_t>& targets) {
        edges_ += targets.size();
        if (edges_ > kMaxEdges)
            throw ESchemaContentModel("o conteúdo é complexo demais");
        Append(follow_[position], targets);
    }

    static void Append(std::vector<std::uint32_t>& to, const std::vector<std::uint32_t>& from) {
        to.insert(to.end(), from.begin(), from.end());
    }

    void SortEdges(const TFragment& whole) {
        start_ = whole.First;
        Unite(start_);
        for (auto& targets : follow_)
            Unite(targets);
    }

    /// Declaration order, each once.
    static void Unite(std::vector<std::uint32_t>& targets) {
        std::sort(targets.begin(), targets.end());
        targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    }

    void CheckAmbiguity() {
        CheckState(start_, std::nullopt);
        for (std::uint32_t position = 0; position < positions_.size(); ++position) {
            const bool repeated = positions_[position].Max > 1;
            CheckState(follow_[position], repeated ? std::optional(position) : std::nullopt);
        }
    }

    void CheckState(const std::vector<std::uint32_t>& targets, std::optional<std::uint32_t> repeated) {
        // Most states lead to few places, of which none can be confused with another.
        if (targets.size() + (repeated ? 1 : 0) < 2)
            return;
        symbols_.clear();
        std::vector<std::uint32_t> wildcards;
        const auto add = [&](std::uint32_t target) {
            const TSchemaPosition& position = positions_[target];
            if (position.Wildcard != nullptr)
                wildcards.push_back(target);
            else if (const auto [known, added] = symbols_.emplace(position.Symbol(), target);
                     !added && known->second != target)
                throw ESchemaContentModel("conteúdo ambíguo: dois lugares possíveis para " +
                                          NameOf(position));
        };
        for (const std::uint32_t target : targets)
            add(target);
        if (repeated)
            add(*repeated);
        for (const std::uint32_t wildcard : wildcards)
            CheckWildcard(wildcard, wildcards.front());
    }

    /// All wildcards admit elements of some namespaces in common.
    void CheckWildcard(std::uint32_t target, std::uint32_t other) {
        if (target != other)
            throw ESchemaContentModel("conteúdo ambíguo: xs:any e xs:any");
        for (const auto& [symbol, position] : symbols_)
            if (positions_[target].Wildcard->Admits(positions_[position].Element->Namespace))
                throw ESchemaContentModel("conteúdo ambíguo: " + NameOf(positions_[position]) + " e xs:any");
    }

    TSchemaAutomaton Finish(const TFragment& whole) {
        TSchemaAutomaton automaton;
        automaton.Positions = std::move(positions_);
        automaton.Accepting.assign(automaton.Positions.size() + 1, 0);
        automaton.Accepting[0] = whole.Nullable ? 1 : 0;
        for (const std::uint32_t position : whole.Last)
            automaton.Accepting[position + 1] = 1;
        automaton.EdgeStart.push_back(0);
        const auto addState = [&](const std::vector<std::uint32_t>& targets) {
            for (const std::uint32_t target : targets) {
                automaton.EdgeTargets.push_back(target);
                automaton.EdgeSymbols.push_back(automaton.Positions[target].Symbol());
            }
            automaton.EdgeStart.push_back(static_cast<std::uint32_t>(automaton.EdgeTargets.size()));
        };
        addState(start_);
        for (const auto& targets : follow_)
            addState(targets);
        automaton.HasWildcards = std::any_of(automaton.Positions.begin(), automaton.Positions.end(),
                                             [](const TSchemaPosition& p) { return p.Wildcard != nullptr; });
        return automaton;
    }

    std::vector<TSchemaPosition> positions_;
    std::vector<std::vector<std::uint32_t>> follow_;
    std::vector<std::uint32_t> start_;
    std::unordered_map<std::uint32_t, std::uint32_t> symbols_;
    std::size_t edges_ = 0;
};

TSchemaAutomaton CompileAll(const TSchemaParticle& particle) {
    TSchemaAutomaton automaton;
    automaton.IsAll = true;
    if (!particle.Required || particle.Max != 1 || particle.Children.size() > kMaxAllPositions)
        throw ESchemaContentModel(
            "xs:all opcional, com repetição ou com mais de 64 elementos não é suportado");
    for (const auto& child : particle.Children) {
        if (child->Kind != TSchemaParticle::TKind::Element || child->Max > 1)
            throw ESchemaContentModel("xs:all só pode conter elementos, cada um no máximo uma vez");
        if (child->Max == 0)
            continue;
        for (const TSchemaPosition& other : automaton.Positions)
            if (other.Symbol() == child->Element->Symbol)
                throw ESchemaContentModel("conteúdo ambíguo: dois lugares possíveis para " + NameOf(other));
        automaton.Positions.push_back({child->Element, nullptr, child->Required, child->Max});
    }
    return automaton;
}

} // namespace

TSchemaAutomaton CompileSchemaParticle(const TSchemaParticle& particle) {
    if (particle.Kind == TSchemaParticle::TKind::All)
        return CompileAll(particle);
    return TAutomatonBuilder().Build(particle);
}

} // namespace conferix
