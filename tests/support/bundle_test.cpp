#include "tests/support/bundle_test.h"

#include <cstdint>

using minihost::Kind;

void BundleTest::start(Options options, const std::filesystem::path& bundle) {
    stop();
    host_ = std::make_unique<Host>(std::move(options));
    host_->load(bundle);
}

void BundleTest::stop() {
    if (!host_) return;
    EXPECT_EQ(host_->open_references(), std::vector<std::string>{});
    EXPECT_EQ(host_->faults(), std::vector<std::string>{});
    host_.reset();
}

void BundleTest::TearDown() { stop(); }

ObjectRef BundleTest::block(const Bytes& bytes) {
    return host_->new_block(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

ObjectRef BundleTest::view(GuardedBytes& bytes) { return view(bytes, int32_t(bytes.size())); }

ObjectRef BundleTest::view(GuardedBytes& bytes, int32_t reported_size) {
    return host_->new_view(bytes.data(), reported_size);
}

Bytes BundleTest::bytes(const ObjectRef& block) {
    if (!block) return {};
    const auto* data = static_cast<const uint8_t*>(host_->block_data(block.get()));
    return {data, data + host_->block_size(block.get())};
}

Value BundleTest::call(const ObjectRef& self, std::string_view name, std::vector<Value> arguments) {
    if (!self) return host_->call_on_nil("MemoryBlock", name, arguments);
    return host_->call(self.get(), name, arguments);
}

Value BundleTest::get(const ObjectRef& self, std::string_view property) {
    if (!self) return host_->get_on_nil("MemoryBlock", property);
    return host_->get(self.get(), property);
}

void BundleTest::assign(const ObjectRef& self, std::string_view name, std::vector<Value> arguments,
                        const Value& value) {
    if (!self) return host_->assign_on_nil("MemoryBlock", name, arguments, value);
    host_->assign(self.get(), name, arguments, value);
}

std::vector<Value> MemberTest::arguments_for(const minihost::Method& method, const ObjectRef& block,
                                             int32_t number) {
    std::vector<Value> arguments;
    for (const minihost::Parameter& parameter : method.declaration.parameters) {
        const bool is_block = parameter.type.class_name == "MemoryBlock";
        switch (parameter.type.kind) {
            case Kind::Integer:
                arguments.emplace_back(number);
                break;
            case Kind::Int64:
                arguments.emplace_back(int64_t{number});
                break;
            case Kind::Double:
                arguments.emplace_back(1.5);
                break;
            case Kind::Boolean:
                arguments.emplace_back(true);
                break;
            case Kind::Ptr:
                arguments.emplace_back(Pointer{host().block_data(block.get())});
                break;
            case Kind::String:
                arguments.emplace_back(text("text"));
                break;
            default:
                arguments.emplace_back(is_block ? block : ObjectRef());
        }
        if (parameter.default_value) arguments.back() = *parameter.default_value;
    }
    return arguments;
}

std::vector<int32_t> extremes(int32_t size) {
    std::vector<int32_t> numbers = {INT32_MIN, INT32_MIN + 1, -1, 0, 1};
    for (const int32_t number : {size - 1, size, size + 1}) {
        if (number > 1) numbers.push_back(number);
    }
    numbers.push_back(INT32_MAX - 1);
    numbers.push_back(INT32_MAX);
    return numbers;
}
