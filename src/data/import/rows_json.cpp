#include "data/import/cell_text.h"
#include "data/import/import_errors.h"
#include "data/import/row_reader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <istream>
#include <streambuf>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxTokenBytes = 1 << 20;
constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxNames = 200;

using TJson = nlohmann::json;

/// Feeds the parser and sees to it that no single text takes all memory.
class TJsonBuffer : public std::streambuf {
  public:
    TJsonBuffer(IByteSource& source, const fs::path& name) : source_(source), name_(name) {}
    void TokenEnds() { sinceToken_ = 0; }

  protected:
    int_type underflow() override {
        sinceToken_ += block_.size();
        if (sinceToken_ > kMaxTokenBytes) {
            throw EInvalidPublication(name_, "um texto do arquivo JSON é longo demais");
        }
        const std::size_t got = source_.Read(block_.data(), block_.size());
        setg(block_.data(), block_.data(), block_.data() + got);
        return got == 0 ? traits_type::eof() : traits_type::to_int_type(block_.front());
    }

  private:
    IByteSource& source_;
    fs::path name_;
    std::array<char, 65536> block_{};
    std::size_t sinceToken_ = 0;
};

/// Collects the objects that stand in arrays.
class TJsonHandler : public nlohmann::json_sax<TJson> {
  public:
    TJsonHandler(TJsonBuffer& buffer, const fs::path& name, const TRowHandler& onRow)
        : buffer_(buffer), name_(name), onRow_(onRow) {
        row_.Number = 0;
    }

    bool null() override { return Value({}, false); }
    bool boolean(bool value) override { return Value(value ? "true" : "false", false); }
    bool number_integer(number_integer_t value) override { return Value(std::to_string(value), true); }
    bool number_unsigned(number_unsigned_t value) override { return Value(std::to_string(value), true); }
    bool number_float(number_float_t, const string_t& text) override { return Value(text, true); }
    bool string(string_t& value) override { return Value(value, false); }
    bool binary(binary_t&) override { return true; }
    bool key(string_t& value) override {
        buffer_.TokenEnds();
        key_ = value;
        return true;
    }
    bool start_object(std::size_t) override {
        if (recordDepth_ == 0 && !arrays_.empty() && arrays_.back()) {
            recordDepth_ = arrays_.size() + 1;
            ++row_.Number;
        }
        return Open(false);
    }
    bool start_array(std::size_t) override { return Open(true); }
    bool end_object() override {
        const bool endsRecord = recordDepth_ == arrays_.size();
        arrays_.pop_back();
        return endsRecord ? EndRecord() : true;
    }
    bool end_array() override {
        arrays_.pop_back();
        return true;
    }
    bool parse_error(std::size_t at, const std::string&, const nlohmann::detail::exception&) override {
        throw EInvalidPublication(name_, "não é um arquivo JSON válido (byte " + std::to_string(at) +
                                             "); ele pode ter chegado incompleto, baixe-o de novo");
    }

  private:
    bool Open(bool isArray) {
        buffer_.TokenEnds();
        arrays_.push_back(isArray);
        if (arrays_.size() > kMaxDepth) {
            throw EInvalidPublication(name_, "o arquivo JSON tem níveis demais");
        }
        return true;
    }

    bool Value(const std::string& text, bool isNumber) {
        buffer_.TokenEnds();
        if (recordDepth_ == 0 || arrays_.back()) {
            return true;
        }
        auto known = std::find(names_.begin(), names_.end(), key_);
        if (known == names_.end()) {
            if (names_.size() == kMaxNames) {
                return true;
            }
            known = names_.insert(names_.end(), key_);
            newName_ = true;
        }
        const auto column = static_cast<std::size_t>(known - names_.begin());
        row_.Cells.resize(names_.size());
        isOwn_.resize(names_.size());
        const bool isOwn = arrays_.size() == recordDepth_;
        if (isOwn_[column] && !isOwn) {
            return true;
        }
        isOwn_[column] = isOwn;
        row_.Cells[column] = {std::string(TrimBlanks(text)), isNumber, false};
        return true;
    }

    bool EndRecord() {
        recordDepth_ = 0;
        if (newName_) {
            TRow header{row_.Number, {}, {}};
            for (const std::string& name : names_) {
                header.Cells.push_back({name, false, false});
            }
            newName_ = false;
            if (!onRow_(header)) {
                return false;
            }
        }
        const bool goesOn = onRow_(row_);
        row_.Cells.assign(names_.size(), {});
        isOwn_.assign(names_.size(), false);
        return goesOn;
    }

    TJsonBuffer& buffer_;
    fs::path name_;
    const TRowHandler& onRow_;
    std::vector<bool> arrays_; ///< what is open: arrays (true) and objects
    std::size_t recordDepth_ = 0;
    std::vector<std::string> names_;
    bool newName_ = false;
    std::string key_;
    TRow row_;
    std::vector<bool> isOwn_; ///< of a cell: from the record itself, not from an object inside of it
};

} // namespace

void ReadJsonRows(IByteSource& source, const fs::path& name, const TRowHandler& onRow) {
    TJsonBuffer buffer(source, name);
    std::istream stream(&buffer);
    TJsonHandler handler(buffer, name, onRow);
    TJson::sax_parse(stream, &handler);
}

} // namespace conferix
