// 32-bit x86: a host keeps its stack at multiples of 4 bytes only, while vectors want multiples of 16.
#include <cstring>

#include "tests/support/bundle_test.h"

using minihost::Kind;
using minihost::Method;

// Calls `function` with `count` words as its arguments, on a stack that is `shift` bytes below a multiple
// of 16. Returns the low word of the result.
extern "C" uint32_t call_on_shifted_stack(void* function, const uint32_t* words, uint32_t count,
                                          uint32_t shift);
asm(R"(
    .text
call_on_shifted_stack:
    pushl   %ebp
    movl    %esp, %ebp
    pushl   %esi
    movl    8(%ebp), %eax
    movl    12(%ebp), %esi
    movl    16(%ebp), %ecx
    andl    $-16, %esp
    subl    20(%ebp), %esp
1:  jecxz   2f
    decl    %ecx
    pushl   (%esi,%ecx,4)
    jmp     1b
2:  call    *%eax
    leal    -4(%ebp), %esp
    popl    %esi
    popl    %ebp
    ret
)");

namespace {

class StackTest : public MemberTest {
 protected:
    static void push(std::vector<uint32_t>& words, const Value& value) {
        const auto append = [&](const auto& number) {
            uint32_t halves[2] = {};
            std::memcpy(halves, &number, sizeof number);
            words.insert(words.end(), halves, halves + (sizeof number + 3) / 4);
        };
        if (const auto* object = std::get_if<ObjectRef>(&value)) return append(object->get());
        if (const auto* string = std::get_if<StringRef>(&value)) return append(string->get());
        if (const auto* integer = std::get_if<int32_t>(&value)) return append(*integer);
        if (const auto* int64 = std::get_if<int64_t>(&value)) return append(*int64);
        if (const auto* number = std::get_if<double>(&value)) return append(*number);
        if (const auto* truth = std::get_if<bool>(&value)) return append(int32_t(*truth));
        if (const auto* pointer = std::get_if<minihost::Pointer>(&value)) return append(pointer->address);
        FAIL() << "an argument of a type that no member takes";
    }

    static constexpr int32_t kSize = 1000;
};

TEST_F(StackTest, EveryMemberRunsOnAStackOfAnyAlignment) {
    std::vector<uint8_t> filled(kSize);
    Random random;
    for (uint8_t& byte : filled) byte = uint8_t(random() >> 8);
    const ObjectRef other = block(filled);
    for (const Method& method : host().find_class("MemoryBlock")->methods) {
        if (method.declaration.text.find("Handle") != std::string::npos) continue;
        const std::vector<Value> arguments = arguments_for(method, other, 100);
        const ObjectRef expected = block(filled);
        call(expected, method.declaration.name, arguments);
        for (const uint32_t shift : {0u, 4u, 8u, 12u}) {
            SCOPED_TRACE(testing::Message() << method.declaration.text << " with " << shift);
            const ObjectRef changed = block(filled);
            std::vector<uint32_t> words;
            push(words, changed);
            for (const Value& value : arguments) push(words, value);
            const uint32_t result =
                call_on_shifted_stack(method.function, words.data(), uint32_t(words.size()), shift);
            if (method.declaration.result.kind == Kind::Object) {
                ObjectRef::adopt(reinterpret_cast<REALobject>(result));
            } else if (method.declaration.result.kind == Kind::String) {
                StringRef::adopt(reinterpret_cast<REALstring>(result));
            }
            EXPECT_TRUE(same_bytes(bytes(changed), bytes(expected)));
        }
    }
}

}  // namespace
