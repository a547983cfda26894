#include "xml/schema/schema_tables.h"

#include "platform/platform.h"
#include "xml/schema/schema_code.h"

#include <re2/re2.h>

#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace conferix {

namespace {

/// Also tells a machine of another byte order.
constexpr std::uint32_t kMark = 0x43465831;

/// Tells changes apart; nobody gains anything by forging it.
std::uint64_t Digest(std::string_view bytes) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
    std::uint64_t digest = bytes.size();
    const auto add = [&](std::uint64_t word) {
        digest = (digest ^ word) * kFactor;
        digest ^= digest >> 32U;
    };
    for (; bytes.size() >= sizeof(std::uint64_t); bytes.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof word);
        add(word);
    }
    for (const char c : bytes)
        add(static_cast<unsigned char>(c));
    return digest;
}

std::string ReadSchema(const std::filesystem::path& folder, const std::string& name) {
    return ReadWholeFile(folder / PathFromText(name));
}

template<class T>
concept CNumber = std::is_arithmetic_v<T> || std::is_enum_v<T>;

} // namespace

/// Puts values one after the other; a pointer as the number of what it points to, from 1, and 0 for none.
class TSchemaTables::TWriter {
  public:
    template<CNumber T>
    void operator()(const T& number) {
        Raw(&number, sizeof number);
    }
    void operator()(const std::string& text) {
        (*this)(static_cast<std::uint32_t>(text.size()));
        Raw(text.data(), text.size());
    }
    template<class T>
    void operator()(const std::optional<T>& value) {
        (*this)(value.has_value());
        if (value)
            (*this)(*value);
    }
    template<class T, class Each>
    void List(const std::vector<T>& list, Each each) {
        (*this)(static_cast<std::uint32_t>(list.size()));
        for (const T& item : list)
            each(item);
    }
    template<CNumber T>
    void Numbers(const std::vector<T>& list) {
        (*this)(static_cast<std::uint32_t>(list.size()));
        Raw(list.data(), list.size() * sizeof(T));
    }
    /// Numbers what a list owns, before anything that points to it is put.
    template<class T>
    void Own(const std::vector<std::unique_ptr<T>>& list) {
        (*this)(static_cast<std::uint32_t>(list.size()));
        for (std::size_t i = 0; i < list.size(); ++i)
            numbers_[list[i].get()] = static_cast<std::uint32_t>(i + 1);
    }
    template<class T>
    void To(const T* const& pointer, const std::vector<std::unique_ptr<T>>&) {
        (*this)(pointer != nullptr ? numbers_.at(pointer) : 0U);
    }

    std::string Take() { return std::move(bytes_); }

  private:
    void Raw(const void* bytes, std::size_t size) { bytes_.append(static_cast<const char*>(bytes), size); }

    std::string bytes_;
    std::unordered_map<const void*, std::uint32_t> numbers_;
};

/// Takes them out again in the same order. Raises std::out_of_range where the bytes end too early.
class TSchemaTables::TReader {
  public:
    explicit TReader(std::string_view bytes) : rest_(bytes) {}

    template<CNumber T>
    void operator()(T& number) {
        std::memcpy(&number, Raw(sizeof number), sizeof number);
    }
    void operator()(std::string& text) {
        const std::size_t size = Number();
        text.assign(Raw(size), size);
    }
    template<class T>
    void operator()(std::optional<T>& value) {
        bool given = false;
        (*this)(given);
        if (given)
            (*this)(value.emplace());
    }
    template<class T, class Each>
    void List(std::vector<T>& list, Each each) {
        list.resize(Count());
        for (T& item : list)
            each(item);
    }
    template<CNumber T>
    void Numbers(std::vector<T>& list) {
        list.resize(Count());
        if (!list.empty())
            std::memcpy(list.data(), Raw(list.size() * sizeof(T)), list.size() * sizeof(T));
    }
    template<class T>
    void Own(std::vector<std::unique_ptr<T>>& list) {
        list.resize(Count());
        for (auto& item : list)
            item = std::make_unique<T>();
    }
    template<class T>
    void To(const T*& pointer, const std::vector<std::unique_ptr<T>>& list) {
        const std::uint32_t number = Number();
        pointer = number != 0 ? list.at(number - 1).get() : nullptr;
    }
    std::uint32_t Number() {
        std::uint32_t number = 0;
        (*this)(number);
        return number;
    }
    std::string_view Rest() const { return rest_; }

  private:
    /// Of things that take a byte at least.
    std::size_t Count() {
        const std::size_t count = Number();
        if (count > rest_.size())
            throw std::out_of_range("schema tables");
        return count;
    }
    const char* Raw(std::size_t size) {
        if (size > rest_.size())
            throw std::out_of_range("schema tables");
        const char* bytes = rest_.data();
        rest_.remove_prefix(size);
        return bytes;
    }

    std::string_view rest_;
};

/// Puts or takes all that a set holds but what follows from the rest.
template<class TArchive, class TSet>
void TSchemaTables::Exchange(TArchive& archive, TSet& set) {
    const auto each = [&](auto& value) { archive(value); };
    archive.List(set.namespaces_, each);
    archive(set.targetNamespace_);
    archive.Own(set.simpleTypes_);
    archive.Own(set.complexTypes_);
    archive.Own(set.elements_);
    archive.Own(set.wildcards_);
    for (auto& type : set.simpleTypes_) {
        archive(type->Name);
        archive(type->Namespace);
        archive.To(type->Base, set.simpleTypes_);
        archive(type->Kind);
        auto& facets = type->Facets;
        archive(facets.Length);
        archive(facets.MinLength);
        archive(facets.MaxLength);
        archive(facets.TotalDigits);
        archive(facets.FractionDigits);
        archive(facets.MinInclusive);
        archive.List(facets.Patterns, [&](auto& pattern) { archive(pattern.Text); });
        archive.List(facets.Codes, each);
    }
    for (auto& wildcard : set.wildcards_) {
        archive(wildcard->Lax);
        archive(wildcard->OtherTo);
    }
    for (auto& element : set.elements_) {
        archive(element->Name);
        archive(element->Namespace);
        archive(element->Symbol);
        archive.To(element->SimpleType, set.simpleTypes_);
        archive.To(element->ComplexType, set.complexTypes_);
        archive(element->Nillable);
        archive(element->Global);
    }
    for (auto& type : set.complexTypes_) {
        archive(type->Name);
        archive(type->Namespace);
        archive.To(type->BaseComplex, set.complexTypes_);
        archive(type->Content);
        archive.To(type->SimpleContent, set.simpleTypes_);
        archive.List(type->Attributes, [&](auto& attribute) {
            archive(attribute.Name);
            archive.To(attribute.Type, set.simpleTypes_);
            archive(attribute.Required);
        });
        auto& automaton = type->Automaton;
        archive.List(automaton.Positions, [&](auto& position) {
            archive.To(position.Element, set.elements_);
            archive.To(position.Wildcard, set.wildcards_);
            archive(position.Required);
            archive(position.Max);
        });
        archive.Numbers(automaton.EdgeStart);
        archive.Numbers(automaton.EdgeTargets);
        archive.Numbers(automaton.EdgeSymbols);
        archive.Numbers(automaton.Accepting);
        archive(automaton.HasWildcards);
        archive(automaton.IsAll);
    }
    archive.List(set.globalElements_, [&](auto& element) { archive.To(element, set.elements_); });
    archive.To(set.anyType_, set.complexTypes_);
}

std::filesystem::path TSchemaTables::FileOf(const std::filesystem::path& mainFile) {
    std::filesystem::path file = mainFile;
    return file.replace_extension(".tabelas");
}

std::string TSchemaTables::Write(const TSchemaSet& set, const std::filesystem::path& folder) {
    TWriter content;
    content.List(set.files_, [&](const std::string& name) {
        content(name);
        content(Digest(ReadSchema(folder, name)));
    });
    // Symbols go by their numbers.
    std::vector<TSchemaSet::TNameKey> symbols(set.symbols_.size());
    for (const auto& [key, symbol] : set.symbols_)
        symbols[symbol] = key;
    content.List(symbols, [&](const TSchemaSet::TNameKey& symbol) {
        content(symbol.Namespace);
        content(std::string(symbol.Name));
    });
    Exchange(content, set);
    const std::string bytes = content.Take();
    TWriter file;
    file(kMark);
    file(std::string(kSchemaCode));
    file(Digest(bytes));
    return file.Take() + bytes;
}

std::shared_ptr<const TSchemaSet> TSchemaTables::Read(const std::filesystem::path& mainFile) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(FileOf(mainFile), none))
        return nullptr;
    try {
        const std::string file = ReadWholeFile(FileOf(mainFile));
        TReader archive(file);
        std::string code;
        std::uint64_t digest = 0;
        if (archive.Number() != kMark)
            return nullptr;
        archive(code);
        archive(digest);
        if (code != kSchemaCode || digest != Digest(archive.Rest()))
            return nullptr;
        std::shared_ptr<TSchemaSet> set(new TSchemaSet);
        set->mainFile_ = mainFile;
        bool same = true;
        archive.List(set->files_, [&](std::string& name) {
            archive(name);
            archive(digest);
            same = same && digest == Digest(ReadSchema(mainFile.parent_path(), name));
        });
        if (!same)
            return nullptr;
        set->symbolNames_.resize(archive.Number());
        set->symbols_.reserve(set->symbolNames_.size());
        for (auto& name : set->symbolNames_) {
            const std::uint32_t namespaceId = archive.Number();
            archive(*(name = std::make_unique<std::string>()));
            set->symbols_.emplace(TSchemaSet::TNameKey{namespaceId, *name},
                                  static_cast<std::uint32_t>(set->symbols_.size()));
        }
        Exchange(archive, *set);
        for (const auto& type : set->simpleTypes_) {
            type->CodeKeys.insert(type->Facets.Codes.begin(), type->Facets.Codes.end());
            for (TSchemaPattern& pattern : type->Facets.Patterns)
                pattern.Matcher = std::make_shared<const TSchemaMatcher>(pattern.Text);
        }
        set->IndexNames();
        return set;
    } catch (const EFileNotRead&) {
        return nullptr; // a schema file is gone, which whoever compiles tells
    } catch (const std::out_of_range&) {
        return nullptr;
    }
}

} // namespace conferix
