// Rows of the member tables that must not compile, one for each way in which a declaration and its function
// can disagree. ROW picks one; row 0 is right and must compile.
#include "plugin/registration/table_rows.h"

[[maybe_unused]] static int32_t count(REALmemoryBlock, int32_t, double) { return 0; }
[[maybe_unused]] static void set_count(REALmemoryBlock, int32_t, double, int32_t) {}
[[maybe_unused]] static int64_t wide_count(REALmemoryBlock, int32_t, double) { return 0; }
[[maybe_unused]] static bool flag(REALmemoryBlock) { return true; }
[[maybe_unused]] static int32_t size(REALobject, int32_t) { return 0; }

#define MEMBER method_record<REALmemoryBlock, DECLARATION, FUNCTIONS>()
#if ROW == 0
#define DECLARATION "Count(a as Integer = 0, b as DOUBLE) as integer"
#define FUNCTIONS count, set_count
#elif ROW == 1  // a parameter too few
#define DECLARATION "Count(a as Integer) as Integer"
#define FUNCTIONS count
#elif ROW == 2  // a parameter too many
#define DECLARATION "Count(a as Integer, b as double, c as Ptr) as Integer"
#define FUNCTIONS count
#elif ROW == 3  // parameters in another order
#define DECLARATION "Count(b as double, a as Integer) as Integer"
#define FUNCTIONS count
#elif ROW == 4  // an Integer bound to 64 bits
#define DECLARATION "Count(a as Integer, b as double) as Integer"
#define FUNCTIONS wide_count
#elif ROW == 5  // a missing result
#define DECLARATION "Count(a as Integer, b as double)"
#define FUNCTIONS count
#elif ROW == 6  // a type that the host does not have
#define DECLARATION "Count(a as Integer, b as real) as Integer"
#define FUNCTIONS count
#elif ROW == 7  // a setter without the assigned value
#define DECLARATION "Count(a as Integer, b as double) as Integer"
#define FUNCTIONS count, count
#elif ROW == 8  // bool is not how the host passes a Boolean
#define DECLARATION "Flag() as boolean"
#define FUNCTIONS flag
#elif ROW == 9  // called on another kind of object
#define DECLARATION "Size(a as Integer) as Integer"
#define FUNCTIONS size
#elif ROW == 10  // a property of another type
#undef MEMBER
#define MEMBER property_record<REALobject, "Size", "Int64", size>()
#endif

[[maybe_unused]] constexpr auto row = MEMBER;
