// Lots of every kind and version, damaged as programs damage them, and what --estrutura makes of them.
#include "app/structure_repair.h"
#include "data/tuss_connection.h"
#include "model/unidade_federativa.h"
#include "schema_model/element_history.h"
#include "support/generated_lot.h"
#include "support/support.h"
#include "xml/schema/schema_validator.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>

namespace conferix {
namespace {

constexpr long kRuns =
    150; ///< CONFERIX_DANOS names another number, CONFERIX_DANOS_PASTA a folder for failures
constexpr double kDemanded = 0.95;

const std::vector<std::string> kVersions = {"2.02.03", "3.02.00", "3.02.01", "3.02.02", "3.03.01",
                                            "3.03.02", "3.03.03", "3.04.00", "3.04.01", "3.05.00",
                                            "4.00.00", "4.00.01", "4.01.00", "4.02.00", "4.03.00"};
const std::vector<std::string> kGuides3 = {"guiaConsulta", "guiaSP-SADT", "guiaResumoInternacao",
                                           "guiaHonorarios", "guiaOdonto"};
const std::vector<std::string> kGuides2 = {"guiaConsulta", "guiaSP_SADT", "guiaResumoInternacao",
                                           "guiaHonorarioIndividual", "guiaOdontologia"};
/// Names that some version has for what another one calls otherwise.
constexpr const char* kOldNames[] = {"guiaHonorarioIndividual", "guiaHonorarios", "motivoSaida",
                                     "motivoEncerramento", "motivoSaidaInternacao"};
/// By these a file is identified; without them there is nothing to repair it by.
const std::set<std::string> kIdentity = {"mensagemTISS",  "cabecalho", "identificacaoTransacao",
                                         "tipoTransacao", "Padrao",    "versaoPadrao"};

bool Digits(std::string_view text, std::size_t size = 0) {
    return !text.empty() && (size == 0 || text.size() == size) &&
           text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// One run: a lot, its damage and its repair.
class TRun {
  public:
    TRun(const std::string& versao, const std::string& guide, std::uint64_t& seed)
        : versao_(versao), set_(SchemaOfVersion(versao)), lot_(MakeLotTree(*set_, versao, guide, seed)),
          random_(seed * 7919) {
        Collect();
        for (TGeneratedNode* node : nodes_)
            if (node->ValueType != nullptr && node->ValueType->Kind == TSchemaValueKind::Time)
                node->Text = node->Text.substr(0, 6) + "00";
        original_ = Text();
    }

    /// Damages a place by a kind of fault so that there is one more fault; false where no place was found.
    bool Damage(const std::string& kind) {
        constexpr int kTries = 40;
        const std::size_t faults = FaultsOf(Text());
        for (int i = 0; i < kTries; ++i) {
            auto before = lot_.second->Clone();
            Collect();
            TGeneratedNode& node = *nodes_[Below(nodes_.size())];
            const auto parent = parents_.find(&node);
            if (kIdentity.count(node.Name) == 0 && parent != parents_.end() &&
                Kinds().at(kind)(*this, node, *parent->second) && FaultsOf(Text()) > faults)
                return true;
            lot_.second = std::move(before);
        }
        return false;
    }

    std::string Text() const { return lot_.first.Serialize(*lot_.second); }
    const std::string& Original() const { return original_; }
    std::size_t FaultsOf(const std::string& text) const {
        return TSchemaValidator(*set_).Validate(*TXmlParser::Parse(text).Document).size();
    }

    using TDamage = std::function<bool(TRun&, TGeneratedNode&, TGeneratedNode&)>;
    static const std::map<std::string, TDamage>& Kinds();

  private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }

    void Collect() {
        nodes_.clear();
        parents_.clear();
        const std::function<void(TGeneratedNode&)> walk = [&](TGeneratedNode& node) {
            if (node.Name.ends_with("Signature") || node.Name.starts_with("assinatura"))
                return; // what is signed is not repaired
            nodes_.push_back(&node);
            for (const auto& child : node.Children) {
                parents_[child.get()] = &node;
                walk(*child);
            }
        };
        walk(*lot_.second);
    }

    static std::size_t IndexOf(const TGeneratedNode& node, const TGeneratedNode& parent) {
        return static_cast<std::size_t>(
            std::ranges::find_if(parent.Children, [&](const auto& child) { return child.get() == &node; }) -
            parent.Children.begin());
    }
    static std::unique_ptr<TGeneratedNode> Take(TGeneratedNode& node, TGeneratedNode& parent) {
        const auto at = parent.Children.begin() + static_cast<std::ptrdiff_t>(IndexOf(node, parent));
        auto taken = std::move(*at);
        parent.Children.erase(at);
        return taken;
    }
    static void Put(std::unique_ptr<TGeneratedNode> node, TGeneratedNode& parent, std::size_t index) {
        parent.Children.insert(parent.Children.begin() + static_cast<std::ptrdiff_t>(index), std::move(node));
    }
    static bool IsOnly(const TGeneratedNode& node, const TGeneratedNode& parent) {
        return std::ranges::count(parent.Children, node.Name, [](const auto& c) { return c->Name; }) == 1;
    }

    bool Rename(TGeneratedNode& node, const TGeneratedNode& parent) {
        std::vector<std::string> path;
        for (const TGeneratedNode* at = &parent; at != nullptr;
             at = parents_.count(at) != 0 ? parents_.at(at) : nullptr)
            path.insert(path.begin(), at->Name);
        std::vector<std::string_view> names(path.begin(), path.end());
        for (const char* old : kOldNames)
            if (old != node.Name &&
                TElementHistory::BuiltIn().Relation(set_->MainFile().filename().string(), names, old,
                                                    node.Name) == TElementHistory::TRelation::Renamed) {
                node.Name = old;
                return true;
            }
        return false;
    }

    bool MoveLevel(TGeneratedNode& node, TGeneratedNode& parent) {
        const auto outer = parents_.find(&parent);
        if (outer == parents_.end() || !IsOnly(node, parent) || kIdentity.count(parent.Name) != 0)
            return false;
        if (Below(2) == 0) {
            Put(Take(node, parent), *outer->second, IndexOf(parent, *outer->second) + Below(2));
            return true;
        }
        std::vector<TGeneratedNode*> siblings;
        for (const auto& child : parent.Children)
            if (child.get() != &node && !child->Children.empty())
                siblings.push_back(child.get());
        if (siblings.empty())
            return false;
        TGeneratedNode& into = *siblings[Below(siblings.size())];
        Put(Take(node, parent), into, Below(into.Children.size() + 1));
        return true;
    }

    /// An empty element where an optional one is absent.
    bool AddEmpty(TGeneratedNode& parent) const {
        const TSchemaComplexType* type = parent.Element != nullptr ? parent.Element->ComplexType : nullptr;
        if (type == nullptr)
            return false;
        std::size_t index = 0;
        for (const TSchemaPosition& position : type->Automaton.Positions) {
            if (position.Element == nullptr)
                return false;
            const bool there =
                index < parent.Children.size() && parent.Children[index]->Name == position.Element->Name;
            while (index < parent.Children.size() && parent.Children[index]->Name == position.Element->Name)
                ++index;
            if (there || position.Required)
                continue;
            auto empty = std::make_unique<TGeneratedNode>();
            empty->Prefix = parent.Prefix;
            empty->Name = position.Element->Name;
            Put(std::move(empty), parent, index);
            return true;
        }
        return false;
    }

    static bool Punctuate(TGeneratedNode& node) {
        const std::string& text = node.Text;
        if (!Digits(text) || text.size() < 6)
            return false;
        const auto part = [&](std::size_t from, std::size_t size) { return text.substr(from, size); };
        node.Text =
            text.size() == 14
                ? fmt::format("{}.{}.{}/{}-{}", part(0, 2), part(2, 3), part(5, 3), part(8, 4), part(12, 2))
            : text.size() == 11 ? fmt::format("{}.{}.{}-{}", part(0, 3), part(3, 3), part(6, 3), part(9, 2))
                                : fmt::format("{}-{}", part(0, text.size() - 2), part(text.size() - 2, 2));
        return true;
    }

    static bool GroupThousands(TGeneratedNode& node) {
        const std::size_t point = std::min(node.Text.find('.'), node.Text.size());
        if (!Digits(node.Text.substr(0, point)) || point < 4 || node.Text.front() == '0')
            return false;
        if (point < node.Text.size())
            node.Text[point] = ',';
        else if (point < 7)
            return false;
        for (std::size_t at = point; at > 3; at -= 3)
            node.Text.insert(at - 3, at > 3 ? "." : "");
        return true;
    }

    std::string versao_;
    std::shared_ptr<const TSchemaSet> set_;
    std::pair<TSchemaGenerator, std::unique_ptr<TGeneratedNode>> lot_;
    std::mt19937_64 random_;
    std::vector<TGeneratedNode*> nodes_;
    std::map<const TGeneratedNode*, TGeneratedNode*> parents_;
    std::string original_;
};

/// Changes a value of one kind; false where it is none of those.
TRun::TDamage OfValue(std::initializer_list<TSchemaValueKind> kinds,
                      const std::function<bool(TGeneratedNode&)>& change) {
    return [kinds = std::set(kinds), change](TRun&, TGeneratedNode& node, TGeneratedNode&) {
        return node.ValueType != nullptr && !node.Text.empty() && kinds.count(node.ValueType->Kind) != 0 &&
               change(node);
    };
}

const std::map<std::string, TRun::TDamage>& TRun::Kinds() {
    using enum TSchemaValueKind;
    static const std::map<std::string, TDamage> kinds = {
        {"nome com maiúsculas e minúsculas trocadas",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode&) {
             char& letter = node.Name[run.Below(node.Name.size())];
             letter = static_cast<char>((letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z')
                                            ? letter ^ 0x20
                                            : letter);
             return true;
         }},
        {"fora de ordem",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode& parent) {
             if (parent.Children.size() < 2 || !IsOnly(node, parent))
                 return false;
             auto taken = Take(node, parent);
             Put(std::move(taken), parent, run.Below(parent.Children.size() + 1));
             return true;
         }},
        {"nome de outra versão",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode& parent) { return run.Rename(node, parent); }},
        {"sem namespace ou no errado",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode&) {
             node.Prefix = run.Below(2) == 0 ? "" : "livre";
             return true;
         }},
        {"falta o elemento em volta",
         [](TRun&, TGeneratedNode& node, TGeneratedNode& parent) {
             if (node.Children.empty())
                 return false;
             const std::size_t index = IndexOf(node, parent);
             const auto taken = Take(node, parent);
             for (std::size_t i = 0; i < taken->Children.size(); ++i)
                 Put(std::move(taken->Children[i]), parent, index + i);
             return true;
         }},
        {"um nível fora do lugar",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode& parent) { return run.MoveLevel(node, parent); }},
        {"vazio e opcional",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode&) { return run.AddEmpty(node); }},
        {"código sem o zero à esquerda", OfValue({String},
                                                 [](TGeneratedNode& node) {
                                                     // Of a CPF or CNPJ any digit may be missing.
                                                     if (!Digits(node.Text) || node.Text.front() != '0' ||
                                                         node.Text.size() < 2 || node.Text.size() > 8)
                                                         return false;
                                                     node.Text.erase(0, 1);
                                                     return true;
                                                 })},
        {"sigla ou código da UF", OfValue({String},
                                          [](TGeneratedNode& node) {
                                              const std::string_view other = OtherCodeOfUf(node.Text);
                                              const bool uf = node.Name.find("UF") != std::string::npos ||
                                                              node.Name.find("uf") != std::string::npos;
                                              node.Text = other;
                                              return uf && !other.empty();
                                          })},
        {"vírgula decimal", OfValue({Decimal},
                                    [](TGeneratedNode& node) {
                                        const std::size_t point = node.Text.find('.');
                                        // Three decimals might as well be thousands.
                                        if (point == std::string::npos || node.Text.size() - point == 4)
                                            return false;
                                        node.Text[point] = ',';
                                        return true;
                                    })},
        {"ponto de milhar", OfValue({Decimal}, GroupThousands)},
        {"zeros como casas decimais", OfValue({Integer},
                                              [](TGeneratedNode& node) {
                                                  node.Text += node.Text.size() % 2 == 0 ? ".00" : ",0000";
                                                  return true;
                                              })},
        {"data dd/mm/aaaa", OfValue({Date},
                                    [](TGeneratedNode& node) {
                                        const std::string date = node.Text;
                                        node.Text = fmt::format("{}/{}/{}", date.substr(8, 2),
                                                                date.substr(5, 2), date.substr(0, 4));
                                        return date.size() == 10;
                                    })},
        {"hora sem segundos", OfValue({Time},
                                      [](TGeneratedNode& node) {
                                          node.Text.resize(5);
                                          return true;
                                      })},
        {"pontuação em CNPJ, CPF e códigos", OfValue({String}, Punctuate)},
        {"espaços em volta do valor",
         [](TRun& run, TGeneratedNode& node, TGeneratedNode&) {
             if (node.ValueType == nullptr || node.Text.empty())
                 return false;
             node.Text = (run.Below(2) == 0 ? " " : "\n") + node.Text + (run.Below(2) == 0 ? " " : "");
             return true;
         }},
    };
    return kinds;
}

/// Every element that has no child elements, with its value, and how often.
std::map<std::pair<std::string, std::string>, int> Values(const std::string& text) {
    std::map<std::pair<std::string, std::string>, int> values;
    const auto document = TXmlParser::Parse(text).Document;
    for (const TXmlNode* node = document->Element(); node != nullptr;
         node = node->NextInWalk(document->Element()))
        if (node->IsTag() && node->FirstChildTag() == nullptr && node->HasValue())
            ++values[{std::string(node->LocalName()), node->TextWithCData()}];
    return values;
}

/// No value is there that was not there before or is not the one that was meant.
void ExpectNoOtherValue(const std::string& repaired, const std::string& damaged,
                        const std::string& original) {
    auto before = Values(damaged);
    auto meant = Values(original);
    for (const auto& [value, count] : Values(repaired))
        EXPECT_LE(count, std::max(before[value], meant[value])) << value.first << " = " << value.second;
}

/// The same text on lines, each element indented.
std::string OnLines(const std::string& text) {
    std::string lines;
    std::size_t depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        lines += text[at];
        if (text[at] != '>' || at + 1 >= text.size() || text[at + 1] != '<')
            continue;
        const bool opened = text[text.rfind('<', at) + 1] != '/';
        const bool closes = text[at + 2] == '/';
        if (opened && closes)
            continue; // an empty element
        depth += opened ? 1 : 0;
        depth -= closes ? 1 : 0;
        lines += "\n" + std::string(depth * 2, ' ');
    }
    return lines;
}

struct TShare {
    int Damaged = 0;
    int GivenBack = 0;
};

TEST(StructureMutation, TheOriginalComesBack) {
    const char* named = std::getenv("CONFERIX_DANOS");
    const bool shows = std::getenv("CONFERIX_DANOS_PASTA") != nullptr;
    const long runs = named != nullptr ? std::strtol(named, nullptr, 10) : kRuns;
    std::vector<std::string> kinds;
    for (const auto& kind : TRun::Kinds())
        kinds.push_back(kind.first);
    std::map<std::string, TShare> shares;
    TShare all;
    std::uint64_t seed = 0;
    std::mt19937_64 random(20240601);
    TValidadorController controller{TDBConnectionFactory([] { return TTussConnection::InMemory(); })};
    controller.SetSchemaTissPath(BuiltInSchemaFolder());
    controller.Load("lote.xml", TTissFile(std::string("<x/>")));
    for (long i = 0; i < runs; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const std::string& versao = kVersions[n % kVersions.size()];
        const auto& guides = versao.front() == '2' ? kGuides2 : kGuides3;
        TRun run(versao, guides[n / kVersions.size() % guides.size()], seed);
        std::vector<std::string> done;
        while (done.size() < 1 + n % 5) {
            const std::string& kind = kinds[random() % kinds.size()];
            if (run.Damage(kind))
                done.push_back(kind);
        }
        const bool lines = i % 2 == 1;
        const std::string original = lines ? OnLines(run.Original()) : run.Original();
        const auto damaged = std::make_shared<const std::string>(lines ? OnLines(run.Text()) : run.Text());
        SCOPED_TRACE(fmt::format("{} {} seed {}: {}", versao, i, seed, fmt::join(done, ", ")));
        const TCorrectionResult result = RepairStructure(controller, damaged, {});
        const bool same = *result.Xml == original;
        if (!same) {
            const std::size_t faults = run.FaultsOf(*result.Xml);
            EXPECT_LE(faults, run.FaultsOf(*damaged));
            EXPECT_GT(faults, 0U) << "another document than was meant";
            ExpectNoOtherValue(*result.Xml, *damaged, original);
            std::cout << fmt::format("{} {} seed {}: {}\n", versao, i, seed, fmt::join(done, ", "));
            if (shows) {
                const std::filesystem::path folder(std::getenv("CONFERIX_DANOS_PASTA"));
                WriteTestFile(folder / fmt::format("{}.original.xml", i), original);
                WriteTestFile(folder / fmt::format("{}.danificado.xml", i), *damaged);
                WriteTestFile(folder / fmt::format("{}.reparado.xml", i), *result.Xml);
            }
        }
        ++all.Damaged;
        all.GivenBack += same ? 1 : 0;
        for (const std::string& kind : done) {
            ++shares[kind].Damaged;
            shares[kind].GivenBack += same ? 1 : 0;
        }
    }
    for (const auto& [kind, share] : shares)
        std::cout << fmt::format("{:<45} {:>5} {:>6.1f} %\n", kind, share.Damaged,
                                 100.0 * share.GivenBack / share.Damaged);
    std::cout << fmt::format("{} de {}\n", all.GivenBack, all.Damaged);
    EXPECT_GE(all.GivenBack, all.Damaged * kDemanded);
}

} // namespace
} // namespace conferix
