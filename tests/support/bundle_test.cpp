#include "tests/support/bundle_test.h"

#include <cstdint>

using minihost::Host;
using minihost::ObjectRef;
using minihost::Value;

void BundleTest::start(minihost::Options options, const std::filesystem::path& bundle) {
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

ObjectRef BundleTest::block(const std::vector<uint8_t>& bytes) {
    return host_->new_block(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

ObjectRef BundleTest::view(GuardedBytes& bytes) { return view(bytes, int32_t(bytes.size())); }

ObjectRef BundleTest::view(GuardedBytes& bytes, int32_t reported_size) {
    return host_->new_view(bytes.data(), reported_size);
}

std::vector<uint8_t> BundleTest::bytes(const ObjectRef& block) {
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

std::vector<int32_t> extremes(int32_t size) {
    std::vector<int32_t> numbers = {INT32_MIN, INT32_MIN + 1, -1, 0, 1};
    for (const int32_t number : {size - 1, size, size + 1}) {
        if (number > 1) numbers.push_back(number);
    }
    numbers.push_back(INT32_MAX - 1);
    numbers.push_back(INT32_MAX);
    return numbers;
}
