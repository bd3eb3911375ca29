#include "ExpectThrows.h"
#include "RefusingAllocator.h"

#include <Groundwork/SysWrappers/CoreFoundation/SetObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFArray.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFDictionary.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

// Found by argument-dependent lookup from inside GoogleTest, so they live beside CFRange.
static bool operator==(CFRange a, CFRange b) { return a.location == b.location && a.length == b.length; }
static std::ostream& operator<<(std::ostream& out, CFRange r)
{
    return out << "{" << r.location << ", " << r.length << "}";
}

namespace {

using Gx::kIndexToEnd;
using StringArray = Gx::CFArray<CFStringRef>;

class UUIDObject : public Gx::CFObject<CFUUIDRef> {
public:
    UUIDObject(CFUUIDRef inRef, bool inRetain) : CFObject(inRef, inRetain) {}
};

CFArrayRef MakeArray(std::initializer_list<CFStringRef> inValues, CFAllocatorRef inAllocator = nullptr)
{
    const void** values = reinterpret_cast<const void**>(const_cast<CFStringRef*>(inValues.begin()));
    return CFArrayCreate(inAllocator, values, CFIndex(inValues.size()), &kCFTypeArrayCallBacks);
}

TEST(SysCFObject, RetainAdoptAttachAndDetach)
{
    CFUUIDRef uuid = CFUUIDCreate(nullptr);
    {
        UUIDObject retained(uuid, true);
        retained.AttachRef(uuid, true);  // already held: nothing changes
        retained.AttachRef(uuid, false);
        EXPECT_EQ(retained.GetRetainCount(), 2);
        {
            UUIDObject adopted(static_cast<CFUUIDRef>(CFRetain(uuid)), false);
            UUIDObject copy(adopted);
            copy = retained;  // the same object: no second retain
            EXPECT_EQ(CFGetRetainCount(uuid), 4);
        }
        EXPECT_EQ(retained.DetachRef(), uuid);
        EXPECT_EQ(CFGetRetainCount(uuid), 2);
        retained.AttachRef(uuid, false);
        retained.FreeRef();
        EXPECT_EQ(CFGetRetainCount(uuid), 1);
        ExpectThrows([&] { retained.GetRetainCount(); }, FourCC("cfnr"));
    }
    CFRelease(uuid);

    // As the only holder: re-attaching must not release (and so destroy) the object first.
    UUIDObject sole(CFUUIDCreate(nullptr), false);
    sole.AttachRef(sole.GetRefValue(), true);
    EXPECT_EQ(sole.GetRetainCount(), 1);
}

TEST(SysCFObject, ImmutableOrSharedObjectsAreCopiedOnFirstWrite)
{
    CFArrayRef source = MakeArray({CFSTR("a")});
    StringArray array(source, true);
    array.AppendValue(CFSTR("b"));
    EXPECT_EQ(CFArrayGetCount(source), 1);
    EXPECT_EQ(CFGetRetainCount(source), 1);
    CFRelease(source);

    CFArrayRef privateCopy = array.GetRefValue();
    StringArray copy(array);
    copy.AppendValue(CFSTR("c"));
    EXPECT_EQ(array.GetCount(), 2);
    EXPECT_EQ(array.GetRetainCount(), 1);
    array.AppendValue(CFSTR("d"));
    EXPECT_TRUE(array.HasSameRef(privateCopy)) << "a private mutable array is changed in place";

    // Adopted and held by nobody else, an object received as immutable is still copied.
    CFMutableArrayRef mutableSource = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    auto sourceAddress = reinterpret_cast<std::uintptr_t>(mutableSource);
    array = StringArray(static_cast<CFArrayRef>(mutableSource), false);
    array.AppendValue(CFSTR("x"));
    EXPECT_NE(reinterpret_cast<std::uintptr_t>(array.GetRefValue()), sourceAddress);

    Gx::CFDictionary<CFStringRef, CFStringRef> first(0);
    first.AddValue(CFSTR("k"), CFSTR("v"));
    Gx::CFDictionary<CFStringRef, CFStringRef> second(first);
    second.SetValue(CFSTR("k"), CFSTR("w"));
    EXPECT_EQ(first.GetValue(CFSTR("k")), CFSTR("v"));
    EXPECT_EQ(second[CFSTR("k")], CFSTR("w"));
}

TEST(SysCFObject, MutableObjectIsCopiedWhenRetainedAndKeptWhenAdopted)
{
    CFMutableArrayRef theirs = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    {
        StringArray array(theirs, true);
        EXPECT_FALSE(array.HasSameRef(theirs));
        EXPECT_EQ(CFGetRetainCount(theirs), 1);
        array.AttachMutableRef(static_cast<CFMutableArrayRef>(const_cast<void*>(CFRetain(theirs))), false);
        array.AppendValue(CFSTR("b"));  // adopted, but we still hold it too
        EXPECT_EQ(CFArrayGetCount(theirs), 0);
    }
    StringArray adopted(theirs, false);
    adopted.AppendValue(CFSTR("c"));
    CFMutableArrayRef detached = adopted.DetachMutableRef();
    EXPECT_EQ(detached, theirs);
    EXPECT_EQ(CFArrayGetCount(detached), 1);
    CFRelease(detached);
}

TEST(SysCFObject, FailuresThrowTheirIdentifiers)
{
    StringArray empty;
    ExpectThrows([&] { empty.AppendValue(CFSTR("a")); }, FourCC("cfnr"));
    ExpectAdoptedOrRefused([](CFAllocatorRef a) { return StringArray(0, &kCFTypeArrayCallBacks, a); });
    ExpectAdoptedOrRefused([](CFAllocatorRef a) {
        using Dictionary = Gx::CFDictionary<CFStringRef, const void*>;
        return Dictionary(0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks, a);
    });

    // The copy on write uses the source's allocator; when that refuses, nothing changes.
    RefusingAllocator allocator;
    CFArrayRef source = MakeArray({CFSTR("a")}, allocator.Get());
    {
        StringArray array(source, true);
        allocator.ExpectRefusedChangeKeeps(array, [&] { array.AppendValue(CFSTR("b")); });
        EXPECT_EQ(CFGetRetainCount(source), 2);
    }
    CFRelease(source);
}

TEST(SysCFObject, ContainersFollowTheIndexRules)
{
    CFArrayRef source = MakeArray({CFSTR("a"), CFSTR("b"), CFSTR("c")});
    StringArray array(source, false);
    EXPECT_EQ(array.GetValueAt(kIndexToEnd), CFSTR("c"));
    ExpectThrows<Gx::LogicError>([&] { array.GetValueAt(3); }, FourCC("logc"));
    ExpectThrows<Gx::LogicError>([&] { array.RemoveValueAt(3); }, FourCC("logc"));
    EXPECT_TRUE(array.HasSameRef(source)) << "a rejected change must not copy";

    array.InsertValueAt(kIndexToEnd, CFSTR("d"));
    array.ExchangeValuesAt(0, kIndexToEnd);
    EXPECT_EQ(array[0], CFSTR("d"));
    EXPECT_EQ(array.GetFirstIndexOf(CFSTR("a")), 3);
    ExpectThrows<Gx::LogicError>([&] { array.ContainsValue(CFSTR("a"), CFRangeMake(1, kIndexToEnd)); }, FourCC("logc"));

    StringArray none(0);
    EXPECT_FALSE(none.ContainsValue(CFSTR("a")));
    ExpectThrows<Gx::LogicError>([&] { none.GetValueAt(kIndexToEnd); }, FourCC("logc"));

    SetObject<CFStringRef> names;
    ExpectThrows([&] { names.ContainsValue(CFSTR("a")); }, FourCC("cfnr"));
    names.AttachMutableRef(CFSetCreateMutable(nullptr, 0, &kCFTypeSetCallBacks), false);
    names.AddValue(CFSTR("Untitled"));
    CFStringRef equalText = CFStringCreateWithCString(nullptr, "Untitled", kCFStringEncodingUTF8);
    EXPECT_TRUE(names.ContainsValue(equalText));
    EXPECT_FALSE(names.ContainsValue(CFSTR("Untitled 2")));
    CFRelease(equalText);
}

using namespace Gx::CFUtils;

constexpr CFIndex kBad = -999;  // marks a case that must fail

// Runs the Verify form and the Make form on the same input and checks they agree.
template <class Value>
void Check(void (*inVerify)(CFIndex, Value&), bool (*inMake)(CFIndex, Value&), CFIndex inCount, Value inValue,
           Value inExpected, bool inValid)
{
    Value viaMake = inValue;
    EXPECT_EQ(inMake(inCount, viaMake), inValid);
    Value viaVerify = inValue;
    if (!inValid) {
        ExpectThrows<Gx::LogicError>([&] { inVerify(inCount, viaVerify); }, FourCC("logc"));
        EXPECT_EQ(viaMake, viaVerify) << "the two forms adjusted differently";
        return;
    }
    EXPECT_NO_THROW(inVerify(inCount, viaVerify));
    EXPECT_EQ(viaVerify, inExpected);
    EXPECT_EQ(viaMake, inExpected);
}

TEST(SysCFUtils, VerifyIndexAndInsertIndex)
{
    // An insertion may also name the place after the last item.
    struct {
        bool insert;
        CFIndex count, index, expected;
    } cases[] = {
        {false, 3, 0, 0},          {false, 3, 2, 2},          {false, 3, kIndexToEnd, 2},
        {false, 3, -1, -1},        {false, 3, 3, kBad},       {false, 0, kIndexToEnd, kBad},
        {false, 0, 0, kBad},       {false, -1, -5, kBad},     {true, 3, 3, 3},
        {true, 3, kIndexToEnd, 3}, {true, 0, kIndexToEnd, 0}, {true, 0, -2, -2},
        {true, 3, 4, kBad},
    };
    for (auto c : cases) {
        SCOPED_TRACE(testing::Message() << "insert " << c.insert << " count " << c.count << " index " << c.index);
        Check(c.insert ? VerifyInsertIndex : VerifyIndex, c.insert ? MakeInsertIndex : MakeValidIndex, c.count, c.index,
              c.expected, c.expected != kBad);
    }
}

TEST(SysCFUtils, VerifyRange)
{
    struct {
        CFIndex count;
        CFRange range, expected;
        bool valid;
    } cases[] = {
        {5, {0, kIndexToEnd}, {0, 5}, true},
        {5, {1, kIndexToEnd}, {}, false},  // "to the end" counts the whole length
        {5, {kIndexToEnd, 1}, {4, 1}, true},
        {5, {1, 4}, {1, 4}, true},
        {5, {1, 5}, {}, false},
        {5, {2, 0}, {}, false},
        {5, {kIndexToEnd, 0}, {}, false},
        {5, {-1, 2}, {}, false},
        {5, {5, 1}, {}, false},
        {5, {1, 0x7FFFFFFFFFFFFFFF}, {}, false},
        {0, {0, kIndexToEnd}, {}, false},
    };
    for (auto c : cases) {
        SCOPED_TRACE(testing::Message() << "count " << c.count << " range " << c.range);
        Check(VerifyRange, MakeValidRange, c.count, c.range, c.expected, c.valid);
    }
}

}  // namespace
