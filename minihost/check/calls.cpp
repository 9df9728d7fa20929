#include "minihost/check/calls.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <span>

#include "minihost/program/names.h"

namespace minihost::check {
namespace {

constexpr size_t kMostBytes = 320;   // of a block
constexpr size_t kMostBlocks = 8;    // of a call
constexpr size_t kArenaSize = 8192;  // around a block
constexpr size_t kLowSize = 8192;
constexpr size_t kSecondPart = 4096;
constexpr const char* kFolder = "/";

template <class Choice, size_t Count>
const Choice& one_of(Random& random, const Choice (&choices)[Count]) {
    return choices[random.below(Count)];
}

bool is_address(const Parameter& parameter) {
    const std::string& name = parameter.name;
    for (const std::string_view ending : {"Ptr", "Handle", "Hdl", "Address"}) {
        if (name.size() >= ending.size() && same_name(name.substr(name.size() - ending.size()), ending))
            return true;
    }
    return false;
}

// Makes up one call.
class Maker {
 public:
    Maker(const Host& host, Random random) : host_(host), random_(random) {}

    Call call(const Member& member) {
        call_.self = self(member);
        if (!member.method) return call_;
        const Declaration& declaration = member.method->declaration;
        const size_t count = random_.one_in(4) ? declaration.required() : declaration.parameters.size();
        for (const Parameter& parameter :
             std::span(declaration.parameters).first(member.assigns ? declaration.parameters.size() : count))
            call_.arguments.push_back(argument(parameter));
        if (member.assigns) call_.assigned = argument({"value", declaration.result, {}});
        return call_;
    }

 private:
    // Of a class that a bundle brought along there is an instance always: without one the host calls nothing.
    Argument self(const Member& member) {
        if (member.owner().empty()) return Nil();
        const Class* type = host_.find_class(member.owner());
        if (type->record) return New{type->name};
        return random_.one_in(10) ? Argument(Nil()) : object(type->name);
    }

    Argument argument(const Parameter& parameter) {
        const Kind kind = parameter.type.kind;
        switch (kind) {
            case Kind::Integer:
            case Kind::Int64:
            case Kind::UInt64:
                if (is_address(parameter))
                    return random_.one_in(4) ? number(kind, 0) : Argument(LowAddress());
                return number(kind, integer(kind));
            case Kind::Double:
                return real();
            case Kind::Boolean:
                return random_.one_in(2);
            case Kind::String:
                return text();
            case Kind::Ptr:
                if (random_.one_in(8) || call_.blocks.size() == kMostBlocks) return Nil();
                return Address{add_block(std::string(kMostBytes, '\0'))};
            default:
                return random_.one_in(8) ? Argument(Nil()) : object(parameter.type.class_name);
        }
    }

    Argument object(const std::string& class_name) {
        if (same_name(class_name, "MemoryBlock")) return Block{block()};
        if (same_name(class_name, "FolderItem")) return Folder();
        return New{class_name};
    }

    static Argument number(Kind kind, int64_t value) {
        if (kind == Kind::Integer) return int32_t(value);
        if (kind == Kind::UInt64) return uint64_t(value);
        return value;
    }

    int64_t integer(Kind kind) {
        static constexpr int64_t kSmall[] = {-2, -1, 0, 1, 2, 3, 4, 7, 8, 9, 16, 32, 64, 70, 255, 256};
        static constexpr int64_t kExtreme[] = {INT32_MIN,     INT32_MIN + 1, -1000,
                                               INT32_MAX - 1, INT32_MAX,     0x40000000};
        static constexpr int64_t kWide[] = {INT64_MIN,     INT64_MIN + 1, INT64_MAX,
                                            INT64_MAX - 1, 0x80000000,    0x100000000};
        switch (random_.below(4)) {
            case 0:
                return near_a_size();
            case 1:
                return kind == Kind::Integer ? one_of(random_, kExtreme) : one_of(random_, kWide);
            default:
                return one_of(random_, kSmall);
        }
    }

    // The size of a block of the call, or its bits, or one more or less.
    int64_t near_a_size() {
        if (call_.blocks.empty()) return int64_t(random_.below(kMostBytes));
        const auto size = int64_t(call_.blocks[random_.below(call_.blocks.size())].size());
        return size * (random_.one_in(4) ? 8 : 1) + int64_t(random_.below(3)) - 1;
    }

    double real() {
        static constexpr double kReals[] = {0,
                                            -0.0,
                                            1,
                                            -1,
                                            0.5,
                                            1.5,
                                            255.5,
                                            1e-300,
                                            1e10,
                                            -1e300,
                                            std::numeric_limits<double>::infinity(),
                                            -std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::quiet_NaN()};
        return one_of(random_, kReals);
    }

    Argument text() {
        static const std::string kTexts[] = {
            "", "a", "text", "caf\xC3\xA9", std::string("a\0b", 3), "\xFF\xFE", std::string(300, 'x')};
        static const uint32_t kEncodings[] = {kTextEncodingUnknown, kTextEncodingMacRoman,
                                              kTextEncodingUS_ASCII, *encoding_number("UTF-8"), 0x12345678};
        if (random_.one_in(8)) return Text{.nil = true};
        return Text{one_of(random_, kTexts), one_of(random_, kEncodings)};
    }

    // Now and then one that the call has already.
    size_t block() {
        static constexpr size_t kSizes[] = {0, 1, 2, 3, 4, 7, 8, 15, 16, 17, 31, 33, 64, 70, 100, kMostBytes};
        if (!call_.blocks.empty() && random_.one_in(3)) return random_.below(call_.blocks.size());
        std::string bytes(one_of(random_, kSizes), '\0');
        if (bytes.size() <= 100) {
            for (char& byte : bytes) byte = char(random_.next());
        }
        return add_block(std::move(bytes));
    }

    size_t add_block(std::string bytes) {
        if (call_.blocks.size() == kMostBlocks) return random_.below(kMostBlocks);
        call_.blocks.push_back(std::move(bytes));
        return call_.blocks.size() - 1;
    }

    const Host& host_;
    Random random_;
    Call call_;
};

// Scripts

std::string hex(std::string_view bytes) {
    std::string digits;
    for (const char c : bytes) {
        for (const int digit : {uint8_t(c) >> 4, c & 15}) digits += "0123456789ABCDEF"[digit];
    }
    return digits;
}

std::string literal(double number) {
    if (std::isnan(number)) return "Sqrt(-1)";
    if (std::isinf(number)) return number > 0 ? "Exp(1000)" : "-Exp(1000)";
    if (number == 0) return std::signbit(number) ? "-0.0" : "0.0";
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", number);
    return text;
}

class Writer {
 public:
    std::string line(const Member& member, const Call& call) {
        for (size_t i = 0; i < call.blocks.size(); ++i) {
            const std::string& bytes = call.blocks[i];
            const bool zero = bytes.find_first_not_of('\0') == bytes.npos;
            declare(block_name(i) + " As MemoryBlock = " +
                    (zero ? "New MemoryBlock(" + std::to_string(bytes.size()) + ")"
                          : "BlockFromHex(\"" + hex(bytes) + "\")"));
        }
        std::string use;
        if (!member.owner().empty()) use = self(call.self, member.owner()) + '.';
        use += member.name();
        if (!call.arguments.empty()) use.append("(").append(list(call.arguments)).append(")");
        if (call.assigned) use.append(" = ").append(list({*call.assigned}));
        return before_ + (member.property ? "Print " : "") + use + after_;
    }

 private:
    static std::string block_name(size_t index) {
        return std::string("block").append(std::to_string(index + 1));
    }

    void declare(const std::string& text) { before_.append("Dim ").append(text).append(" : "); }

    std::string self(const Argument& argument, const std::string& owner) {
        if (const auto* block = std::get_if<Block>(&argument)) return block_name(block->index);
        std::string name = std::string("self").append(std::to_string(++declared_));
        declare(name + " As " + owner +
                (std::holds_alternative<Nil>(argument) ? "" : " = " + list({argument})));
        return name;
    }

    std::string list(const std::vector<Argument>& arguments) {
        std::string text;
        for (const Argument& argument : arguments)
            text += (text.empty() ? "" : ", ") +
                    std::visit([this](const auto& value) { return this->text_of(value); }, argument);
        return text;
    }

    static std::string text_of(Nil) { return "Nil"; }
    static std::string text_of(int32_t number) { return std::to_string(number); }
    static std::string text_of(int64_t number) { return std::to_string(number); }
    static std::string text_of(uint64_t number) { return std::to_string(number); }
    static std::string text_of(double number) { return literal(number); }
    static std::string text_of(bool truth) { return truth ? "True" : "False"; }
    static std::string text_of(const Text& text) {
        if (text.bytes.empty()) return "\"\"";
        const bool known = encoding_name(text.encoding).find(' ') == std::string::npos;
        return "DefineEncoding(BlockFromHex(\"" + hex(text.bytes) + "\").StringValue(0, " +
               std::to_string(text.bytes.size()) + "), \"" + (known ? encoding_name(text.encoding) : "") +
               "\")";
    }
    static std::string text_of(Block block) { return block_name(block.index); }
    static std::string text_of(Address address) { return block_name(address.index); }
    std::string text_of(LowAddress) {
        after_ = "  ' 1 stands for an address that fits";
        return "1";
    }
    std::string text_of(const New& made) {
        std::string name = std::string("new").append(std::to_string(++declared_));
        declare(name + " As New " + made.class_name);
        return name;
    }
    static std::string text_of(Folder) { return std::string("GetFolderItem(\"") + kFolder + "\")"; }

    std::string before_;
    std::string after_;
    int declared_ = 0;
};

// Results

// A block over an address has no size, and its bytes are not the result's.
std::string shown(const Host& host, const Value& value) {
    struct {
        const Host& host;
        std::string operator()(std::monostate) const { return "nil"; }
        std::string operator()(int32_t number) const { return std::to_string(number); }
        std::string operator()(int64_t number) const { return std::to_string(number); }
        std::string operator()(uint64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return literal(number); }
        std::string operator()(bool truth) const { return truth ? "True" : "False"; }
        std::string operator()(Pointer pointer) const {
            return "address " + std::to_string(reinterpret_cast<uintptr_t>(pointer.address));
        }
        std::string operator()(const StringRef& string) const {
            if (!string) return "nil";
            return "text " + hex(host.bytes_of(string.get())) + ' ' +
                   encoding_name(host.encoding_of(string.get()));
        }
        std::string operator()(const ObjectRef& object) const {
            if (!object) return "nil";
            const std::string& name = host.class_of(object.get()).name;
            const auto* data = host.is_a(object.get(), "MemoryBlock")
                                   ? static_cast<const char*>(host.block_data(object.get()))
                                   : nullptr;
            const int32_t size = data ? host.block_size(object.get()) : 0;
            return name + ' ' + (size > 0 ? hex({data, size_t(size)}) : "");
        }
    } visitor{host};
    return std::visit(visitor, value);
}

// Arguments as a host has them.
class Values {
 public:
    Values(Host& host, Kind kind, const std::vector<ObjectRef>& blocks, const Arena& arena)
        : host_(host), kind_(kind), blocks_(blocks), arena_(arena) {}

    Value operator()(Nil) const {
        if (kind_ == Kind::Ptr) return Pointer();
        return ObjectRef();
    }
    Value operator()(int32_t number) const { return number; }
    Value operator()(int64_t number) const { return number; }
    Value operator()(uint64_t number) const { return number; }
    Value operator()(double number) const { return number; }
    Value operator()(bool truth) const { return truth; }
    Value operator()(const Text& text) const {
        if (text.nil) return StringRef();
        return host_.new_string(text.bytes, text.encoding);
    }
    Value operator()(Block block) const { return blocks_[block.index]; }
    Value operator()(Address address) const { return Pointer{arena_.data(address.index)}; }
    Value operator()(LowAddress) const {
        const auto address = reinterpret_cast<uintptr_t>(arena_.low());
        if (kind_ == Kind::Integer) return int32_t(address);
        if (kind_ == Kind::UInt64) return uint64_t(address);
        return int64_t(address);
    }
    Value operator()(const New& made) const { return host_.new_instance(made.class_name); }
    Value operator()(Folder) const { return host_.new_folder_item(kFolder); }

 private:
    Host& host_;
    Kind kind_;
    const std::vector<ObjectRef>& blocks_;
    const Arena& arena_;
};

constexpr uint8_t kPattern = 0xA5;

}  // namespace

uint64_t Random::next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

std::string signature(const Member& member) {
    std::string text = lower(member.owner()) + '.' + lower(member.name());
    if (member.property) return text + "()";
    text += '(';
    for (const Parameter& parameter : member.method->declaration.parameters)
        text += lower(to_string(parameter.type)) + ',';
    return text + (member.assigns ? ")=" : ")");
}

std::vector<Member> members_of(const Host& host) {
    std::vector<Member> members;
    const auto add = [&](const Method& method) {
        if (!method.bundle) return;
        members.push_back({.method = &method});
        if (method.set) members.push_back({.method = &method, .assigns = true});
    };
    for (const Class* type : host.classes()) {
        for (const Property& property : type->properties) {
            if (property.bundle) members.push_back({.property = &property});
        }
        std::ranges::for_each(type->methods, add);
    }
    std::ranges::for_each(host.globals(), add);
    return members;
}

Call make_call(const Host& host, const Member& member, Random random) {
    return Maker(host, random).call(member);
}

std::string script_of(const Member& member, const Call& call) { return Writer().line(member, call); }

Arena::Arena() : low_(kLowSize, true) {
    for (size_t i = 0; i < kMostBlocks; ++i)
        pages_.push_back(std::make_unique<platform::GuardedPages>(kArenaSize));
}

void Arena::place(const std::vector<std::string>& blocks, Place place) {
    data_.clear();
    sizes_.clear();
    for (size_t i = 0; i < blocks.size(); ++i) {
        const auto& pages = *pages_[i];
        const size_t size = blocks[i].size();
        const size_t room = pages.size() - size;
        uint8_t* data = pages.data() + (place == kStart ? 0 : place == kEnd ? room : room / 2);
        std::memset(pages.data(), kPattern, pages.size());
        std::ranges::copy(blocks[i], data);
        data_.push_back(data);
        sizes_.push_back(size);
    }
    std::memset(low_.data(), 0, low_.size());
    const uint8_t* second = low_.data() + kSecondPart;
    std::memcpy(low_.data(), &second, sizeof second);
}

std::string Arena::bytes(size_t block) const { return {data_[block], data_[block] + sizes_[block]}; }

std::string Arena::damage() const {
    for (size_t i = 0; i < data_.size(); ++i) {
        const std::span all(pages_[i]->data(), pages_[i]->size());
        for (size_t at = 0; at < all.size(); ++at) {
            const uint8_t* byte = &all[at];
            if (byte == data_[i]) at += sizes_[i];
            if (at == all.size() || all[at] == kPattern) continue;
            const auto offset = &all[at] - data_[i];
            return "wrote at offset " + std::to_string(offset) + " of a block of " +
                   std::to_string(sizes_[i]) + " bytes";
        }
    }
    return "";
}

std::string perform(Host& host, const Member& member, const Call& call, Arena& arena) {
    std::vector<ObjectRef> blocks;
    for (size_t i = 0; i < call.blocks.size(); ++i) {
        const auto size = int32_t(call.blocks[i].size());
        blocks.push_back(host.new_view(size > 0 ? arena.data(i) : nullptr, size));
    }
    const auto value = [&](const Argument& argument, Kind kind) {
        return std::visit(Values(host, kind, blocks, arena), argument);
    };
    std::string outcome;
    try {
        const auto self = std::get<ObjectRef>(value(call.self, Kind::Object));
        if (member.property) {
            outcome = shown(host, host.get(*member.property, self.get()));
        } else {
            const Declaration& declaration = member.method->declaration;
            std::vector<Value> arguments;
            for (size_t i = 0; i < call.arguments.size(); ++i)
                arguments.push_back(value(call.arguments[i], declaration.parameters[i].type.kind));
            if (member.assigns) {
                host.assign(*member.method, self.get(), arguments,
                            value(*call.assigned, declaration.result.kind));
            } else {
                outcome = shown(host, host.call(*member.method, self.get(), arguments));
            }
        }
    } catch (const HostException& exception) {
        outcome = exception.what();
    }
    for (size_t i = 0; i < blocks.size(); ++i) outcome.append(1, '\n').append(hex(arena.bytes(i)));
    return outcome;
}

}  // namespace minihost::check
