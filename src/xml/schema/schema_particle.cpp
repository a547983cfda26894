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
constexpr std::uint32_t kMaxCopies = 1'000;
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
        // Empty groups repeated inside each other make no position, but work without end.
        if (++steps_ > kMaxEdges)
            throw ESchemaContentModel("o conteúdo é complexo demais");
        if (particle.Max == 0)
            return {};
        if (particle.Kind == TKind::Element || particle.Kind == TKind::Wildcard)
            return BuildLeaf(particle);
        if (particle.Kind == TKind::All)
            throw ESchemaContentModel("xs:all só pode ser o conteúdo inteiro de um tipo");
        const std::uint32_t min = particle.Min;
        const std::uint32_t max = particle.Max;
        if (max == 1 || (max == kSchemaUnbounded && min <= 1)) {
            TFragment body = BuildOnce(particle);
            if (max != 1)
                Loop(body);
            body.Nullable = body.Nullable || min == 0;
            return body;
        }
        return BuildCopies(particle);
    }

    TFragment BuildLeaf(const TSchemaParticle& particle) {
        if (positions_.size() >= kMaxPositions)
            throw ESchemaContentModel("o conteúdo tem elementos demais");
        const auto index = static_cast<std::uint32_t>(positions_.size());
        positions_.push_back({particle.Element, particle.Wildcard, particle.Min, particle.Max});
        origins_.push_back(&particle);
        follow_.emplace_back();
        return {{index}, {index}, particle.Min == 0};
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

    /// A group that repeats a limited number of times is written out: x{2,4} becomes x x (x (x)?)?.
    TFragment BuildCopies(const TSchemaParticle& particle) {
        const bool unbounded = particle.Max == kSchemaUnbounded;
        const std::uint32_t count = unbounded ? particle.Min : particle.Max;
        if (count > kMaxCopies)
            throw ESchemaContentModel("maxOccurs de um grupo alto demais: " + std::to_string(count));
        std::vector<TFragment> copies;
        copies.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i)
            copies.push_back(BuildOnce(particle));
        if (unbounded)
            Loop(copies.back());
        TFragment result = std::move(copies.back());
        for (std::uint32_t i = count - 1; i > 0; --i) {
            result.Nullable = result.Nullable || i >= particle.Min;
            result = Concatenate(std::move(copies[i - 1]), std::move(result));
        }
        result.Nullable = result.Nullable || particle.Min == 0;
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

    /// Declaration order, each once. Copies of one particle compete where a repeated group can be empty;
    /// the first of them stands for all.
    void Unite(std::vector<std::uint32_t>& targets) const {
        std::sort(targets.begin(), targets.end());
        targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
        if (targets.size() < 2)
            return;
        std::vector<std::uint32_t> kept;
        std::unordered_map<const TSchemaParticle*, std::uint32_t> seen;
        for (const std::uint32_t target : targets)
            if (seen.emplace(origins_[target], target).second)
                kept.push_back(target);
        targets = std::move(kept);
    }

    void CheckAmbiguity() {
        CheckState(start_, std::nullopt);
        for (std::uint32_t position = 0; position < positions_.size(); ++position) {
            const TSchemaPosition& own = positions_[position];
            const bool loops =
                std::binary_search(follow_[position].begin(), follow_[position].end(), position);
            if (loops && own.Min > 1 && own.Max != kSchemaUnbounded)
                throw ESchemaContentModel("conteúdo ambíguo: repetições de " + NameOf(own));
            CheckState(follow_[position], own.Max > 1 ? std::optional(position) : std::nullopt);
        }
    }

    void CheckState(const std::vector<std::uint32_t>& targets, std::optional<std::uint32_t> repeated) {
        symbols_.clear();
        std::vector<std::uint32_t> wildcards;
        const auto add = [&](std::uint32_t target) {
            const TSchemaPosition& position = positions_[target];
            if (position.Wildcard != nullptr)
                wildcards.push_back(target);
            else if (const auto [known, added] = symbols_.emplace(position.Symbol(), target);
                     !added && origins_[known->second] != origins_[target])
                throw ESchemaContentModel("conteúdo ambíguo: dois lugares possíveis para " +
                                          NameOf(position));
        };
        for (const std::uint32_t target : targets)
            add(target);
        if (repeated)
            add(*repeated);
        for (std::size_t i = 0; i < wildcards.size(); ++i)
            CheckWildcard(wildcards, i);
    }

    void CheckWildcard(const std::vector<std::uint32_t>& wildcards, std::size_t index) {
        const std::uint32_t target = wildcards[index];
        const TSchemaWildcard& wildcard = *positions_[target].Wildcard;
        for (const auto& [symbol, other] : symbols_)
            if (wildcard.Admits(positions_[other].Element->Namespace))
                throw ESchemaContentModel("conteúdo ambíguo: " + NameOf(positions_[other]) + " e xs:any");
        for (std::size_t i = 0; i < index; ++i)
            if (origins_[wildcards[i]] != origins_[target] &&
                Overlap(wildcard, *positions_[wildcards[i]].Wildcard))
                throw ESchemaContentModel("conteúdo ambíguo: xs:any e xs:any");
    }

    static bool Overlap(const TSchemaWildcard& left, const TSchemaWildcard& right) {
        using TMode = TSchemaWildcard::TMode;
        if (left.Mode == TMode::List)
            return std::any_of(left.Namespaces.begin(), left.Namespaces.end(),
                               [&](std::uint32_t id) { return right.Admits(id); });
        return right.Mode == TMode::List ? Overlap(right, left) : true;
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
    std::vector<const TSchemaParticle*> origins_;
    std::vector<std::vector<std::uint32_t>> follow_;
    std::vector<std::uint32_t> start_;
    std::unordered_map<std::uint32_t, std::uint32_t> symbols_;
    std::size_t edges_ = 0;
    std::size_t steps_ = 0;
};

TSchemaAutomaton CompileAll(const TSchemaParticle& particle) {
    TSchemaAutomaton automaton;
    automaton.IsAll = true;
    automaton.AllOptional = particle.Min == 0;
    if (particle.Max != 1 || particle.Children.size() > kMaxAllPositions)
        throw ESchemaContentModel("xs:all com repetição ou com mais de 64 elementos");
    for (const auto& child : particle.Children) {
        if (child->Kind != TSchemaParticle::TKind::Element || child->Max > 1)
            throw ESchemaContentModel("xs:all só pode conter elementos, cada um no máximo uma vez");
        if (child->Max == 0)
            continue;
        for (const TSchemaPosition& other : automaton.Positions)
            if (other.Symbol() == child->Element->Symbol)
                throw ESchemaContentModel("conteúdo ambíguo: dois lugares possíveis para " + NameOf(other));
        automaton.Positions.push_back({child->Element, nullptr, child->Min, child->Max});
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
