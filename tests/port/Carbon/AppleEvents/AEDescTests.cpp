// Descriptors, lists, records and Apple events: contents, coercion, flat form, and the
// statuses of misuse.
#include "AETesting.h"

#include <Carbon/AEDataModel.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

using spindeck::test::AttributeOf;
using spindeck::test::Desc;
using spindeck::test::SameDescs;

namespace {

using AEDescriptors = spindeck::test::DescriptorTest;

template <class T>
OSErr Coerced(DescType inType, const void* inData, Size inSize, DescType inToType, T& outValue)
{
    Desc result;
    OSErr status = AECoercePtr(inType, inData, inSize, inToType, &result.d);
    if (status == noErr) {
        EXPECT_EQ(result.d.descriptorType, inToType);
        EXPECT_EQ(AEGetDescDataSize(&result.d), Size(sizeof outValue));
        AEGetDescData(&result.d, &outValue, sizeof outValue);
    }
    return status;
}

template <class From, class To>
OSErr Coerced(DescType inType, From inValue, DescType inToType, To& outValue)
{
    return Coerced(inType, &inValue, sizeof inValue, inToType, outValue);
}

std::string Text(const AEDesc& inDesc)
{
    std::string text(std::size_t(AEGetDescDataSize(&inDesc)), '\0');
    AEGetDescData(&inDesc, text.data(), Size(text.size()));
    return text;
}

TEST_F(AEDescriptors, HoldCopiesOfTheirData)
{
    char bytes[] = "data";
    Desc desc(typeChar, bytes, 4);
    bytes[0] = 'X';
    EXPECT_EQ(Text(desc.d), "data");

    Desc copy;
    ASSERT_EQ(AEDuplicateDesc(&desc.d, &copy.d), noErr);
    EXPECT_NE(copy.d.dataHandle, desc.d.dataHandle);
    ASSERT_EQ(AEReplaceDescData(typeUTF8Text, "other", 5, &copy.d), noErr);
    EXPECT_EQ(copy.d.descriptorType, typeUTF8Text);
    EXPECT_EQ(Text(copy.d), "other");
    EXPECT_EQ(Text(desc.d), "data");

    char small[2] = {};
    EXPECT_EQ(AEGetDescData(&desc.d, small, 2), noErr);
    EXPECT_EQ(std::string(small, 2), "da");

    ASSERT_EQ(AEDisposeDesc(&desc.d), noErr);
    EXPECT_EQ(desc.d.descriptorType, typeNull);
    EXPECT_EQ(desc.d.dataHandle, nullptr);

    Desc null(typeNull, bytes, 4);
    EXPECT_EQ(null.d.dataHandle, nullptr);
    EXPECT_EQ(AECreateDesc(typeChar, nullptr, 4, &null.d), paramErr);
    AEDesc foreign{typeChar, reinterpret_cast<AEDataStorage>(&bytes)};
    EXPECT_EQ(AEGetDescData(&foreign, small, 2), errAENotAEDesc);
}

TEST_F(AEDescriptors, CoerceNumbersOnlyWhenTheValueSurvives)
{
    SInt32 asLong = 0;
    EXPECT_EQ(Coerced(typeSInt16, SInt16(7), typeSInt32, asLong), noErr);
    EXPECT_EQ(asLong, 7);
    EXPECT_EQ(Coerced(typeIEEE64BitFloatingPoint, 3.0, typeSInt32, asLong), noErr);
    EXPECT_EQ(asLong, 3);
    EXPECT_EQ(Coerced(typeIEEE64BitFloatingPoint, 2.5, typeSInt32, asLong), errAECoercionFail);

    SInt16 asShort = 0;
    SInt64 asSigned = 0;
    UInt32 asUnsigned = 0;
    float asFloat = 0;
    EXPECT_EQ(Coerced(typeSInt32, SInt32(70000), typeSInt16, asShort), errAECoercionFail);
    EXPECT_EQ(Coerced(typeUInt64, std::numeric_limits<UInt64>::max(), typeSInt64, asSigned), errAECoercionFail);
    EXPECT_EQ(Coerced(typeSInt32, SInt32(-1), typeUInt32, asUnsigned), errAECoercionFail);
    EXPECT_EQ(Coerced(typeIEEE64BitFloatingPoint, 1e300, typeIEEE32BitFloatingPoint, asFloat), errAECoercionFail);

    Boolean flag = 0;
    EXPECT_EQ(Coerced(typeSInt32, SInt32(1), typeBoolean, flag), noErr);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(Coerced(typeSInt32, SInt32(2), typeBoolean, flag), errAECoercionFail);
    EXPECT_EQ(Coerced(typeFalse, nullptr, 0, typeBoolean, flag), noErr);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(Coerced(typeSInt16, "\x07", 1, typeSInt32, asLong), errAECoercionFail);  // wrong size
}

TEST_F(AEDescriptors, CoerceTextCodesAndProcesses)
{
    const std::string utf8 = "h\xC3\xA9llo \xE2\x98\x83 \xF0\x9F\x98\x80";
    Desc text(typeUTF8Text, utf8.data(), Size(utf8.size()));
    Desc unicode, back, system, again;
    ASSERT_EQ(AECoerceDesc(&text.d, typeUnicodeText, &unicode.d), noErr);
    EXPECT_EQ(AEGetDescDataSize(&unicode.d), Size(10 * sizeof(UniChar)));  // the last character takes two units
    ASSERT_EQ(AECoerceDesc(&unicode.d, typeUTF8Text, &back.d), noErr);
    EXPECT_EQ(Text(back.d), utf8);

    const std::string latin = "caf\xC3\xA9";
    Desc accented(typeUTF8Text, latin.data(), Size(latin.size()));
    ASSERT_EQ(AECoerceDesc(&accented.d, typeChar, &system.d), noErr);
    ASSERT_EQ(AECoerceDesc(&system.d, typeUTF8Text, &again.d), noErr);
    EXPECT_EQ(Text(again.d), latin);

    Desc broken(typeUTF8Text, "\xC3(", 2), failed;
    EXPECT_EQ(AECoerceDesc(&broken.d, typeUnicodeText, &failed.d), errAECoercionFail);
    EXPECT_EQ(failed.d.dataHandle, nullptr);
    EXPECT_EQ(AECoerceDesc(&text.d, typeSInt32, &failed.d), errAECoercionFail);

    FourCharCode code = FourCC("abcd"), asEnum = 0;
    EXPECT_EQ(Coerced(typeType, code, typeEnumerated, asEnum), noErr);
    EXPECT_EQ(asEnum, code);
    SInt32 number = 0;
    EXPECT_EQ(Coerced(typeType, code, typeSInt32, number), errAECoercionFail);

    pid_t pid = 0;
    EXPECT_EQ(Coerced(typeProcessSerialNumber, ProcessSerialNumber{0, kCurrentProcess}, typeKernelProcessID, pid),
              noErr);
    EXPECT_EQ(pid, ::getpid());

    Desc asStored;
    ASSERT_EQ(AECoerceDesc(&text.d, typeWildCard, &asStored.d), noErr);
    EXPECT_EQ(asStored.d.descriptorType, typeUTF8Text);
}

TEST_F(AEDescriptors, ListsKeepItemsInOrder)
{
    Desc list;
    ASSERT_EQ(AECreateList(nullptr, 0, false, &list.d), noErr);
    EXPECT_EQ(list.d.descriptorType, typeAEList);
    SInt32 values[] = {10, 20, 30};
    for (SInt32& value : values)
        ASSERT_EQ(AEPutPtr(&list.d, 0, typeSInt32, &value, sizeof value), noErr);
    SInt32 replacement = 25;
    ASSERT_EQ(AEPutPtr(&list.d, 2, typeSInt32, &replacement, sizeof replacement), noErr);
    EXPECT_EQ(AEPutPtr(&list.d, 5, typeSInt32, &replacement, sizeof replacement), errAEIllegalIndex);

    long count = 0;
    ASSERT_EQ(AECountItems(&list.d, &count), noErr);
    EXPECT_EQ(count, 3);
    AEKeyword keyword = 0;
    DescType type = 0;
    SInt16 second = 0;
    Size size = 0;
    ASSERT_EQ(AEGetNthPtr(&list.d, 2, typeSInt16, &keyword, &type, &second, sizeof second, &size), noErr);
    EXPECT_EQ(keyword, typeWildCard);
    EXPECT_EQ(type, typeSInt16);
    EXPECT_EQ(second, 25);
    EXPECT_EQ(size, Size(sizeof second));
    EXPECT_EQ(AEGetNthPtr(&list.d, 4, typeWildCard, &keyword, &type, &second, sizeof second, &size), errAEBadListItem);

    // A list inside itself is a copy of the list as it was.
    ASSERT_EQ(AEPutDesc(&list.d, 0, &list.d), noErr);
    Desc nested;
    ASSERT_EQ(AEGetNthDesc(&list.d, 4, typeWildCard, &keyword, &nested.d), noErr);
    EXPECT_EQ(nested.d.descriptorType, typeAEList);
    ASSERT_EQ(AECountItems(&nested.d, &count), noErr);
    EXPECT_EQ(count, 3);

    ASSERT_EQ(AEDeleteItem(&list.d, 1), noErr);
    ASSERT_EQ(AEGetNthPtr(&list.d, 1, typeSInt32, &keyword, &type, &values[0], sizeof(SInt32), &size), noErr);
    EXPECT_EQ(values[0], 25);
    EXPECT_EQ(AEDeleteItem(&list.d, 9), errAEBadListItem);

    Desc data(typeSInt32, &replacement, sizeof replacement);
    EXPECT_EQ(AECountItems(&data.d, &count), errAEWrongDataType);
    EXPECT_EQ(AEPutPtr(&data.d, 0, typeSInt32, &replacement, sizeof replacement), errAEWrongDataType);

    // A factored list takes only items of its type that begin with its common data.
    struct {
        DescType type;
        char prefix[2];
    } common{typeChar, {'i', 'd'}};
    Desc factored, tooShort;
    ASSERT_EQ(AECreateList(&common, 6, false, &factored.d), noErr);
    EXPECT_EQ(AEPutPtr(&factored.d, 0, typeChar, "id-1", 4), noErr);
    EXPECT_EQ(AEPutPtr(&factored.d, 0, typeChar, "xx-2", 4), errAEWrongDataType);
    EXPECT_EQ(AEPutPtr(&factored.d, 0, typeSInt32, &replacement, sizeof replacement), errAEWrongDataType);
    AECountItems(&factored.d, &count);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(AECreateList(&common, 2, false, &tooShort.d), paramErr);
}

TEST_F(AEDescriptors, RecordsAreKeyed)
{
    Desc record;
    ASSERT_EQ(AECreateList(nullptr, 0, true, &record.d), noErr);
    EXPECT_EQ(record.d.descriptorType, typeAERecord);
    EXPECT_TRUE(AECheckIsRecord(&record.d));
    SInt32 first = 1, second = 2, replaced = 3;
    ASSERT_EQ(AEPutKeyPtr(&record.d, FourCC("frst"), typeSInt32, &first, sizeof first), noErr);
    ASSERT_EQ(AEPutKeyPtr(&record.d, FourCC("scnd"), typeSInt32, &second, sizeof second), noErr);
    ASSERT_EQ(AEPutKeyPtr(&record.d, FourCC("frst"), typeSInt32, &replaced, sizeof replaced), noErr);

    long count = 0;
    AECountItems(&record.d, &count);
    EXPECT_EQ(count, 2);
    AEKeyword keyword = 0;
    SInt32 value = 0;
    ASSERT_EQ(AEGetNthPtr(&record.d, 1, typeSInt32, &keyword, nullptr, &value, sizeof value, nullptr), noErr);
    EXPECT_EQ(keyword, FourCC("frst"));
    EXPECT_EQ(value, 3);
    DescType type = 0;
    Size size = 0;
    ASSERT_EQ(AESizeOfKeyDesc(&record.d, FourCC("scnd"), &type, &size), noErr);
    EXPECT_EQ(type, typeSInt32);
    EXPECT_EQ(size, 4);

    EXPECT_EQ(AEGetKeyPtr(&record.d, FourCC("none"), typeSInt32, &type, &value, sizeof value, &size),
              errAEDescNotFound);
    EXPECT_EQ(AEDeleteKeyDesc(&record.d, FourCC("frst")), noErr);
    EXPECT_EQ(AEDeleteKeyDesc(&record.d, FourCC("frst")), errAEDescNotFound);
    EXPECT_EQ(AEPutPtr(&record.d, 0, typeSInt32, &value, sizeof value), errAEWrongDataType);

    // A record renamed by its owner is still a record.
    record.d.descriptorType = FourCC("obj ");
    Desc asRecord;
    ASSERT_EQ(AECoerceDesc(&record.d, typeAERecord, &asRecord.d), noErr);
    EXPECT_EQ(AEGetKeyPtr(&asRecord.d, FourCC("scnd"), typeSInt32, &type, &value, sizeof value, &size), noErr);
    EXPECT_EQ(value, 2);
}

TEST_F(AEDescriptors, AppleEventsCarryAttributesAndParameters)
{
    ProcessSerialNumber target{0, kCurrentProcess};
    Desc address(typeProcessSerialNumber, &target, sizeof target);
    Desc event, other;
    ASSERT_EQ(AECreateAppleEvent(kCoreEventClass, kAEOpenApplication, &address.d, kAutoGenerateReturnID, 77, &event.d),
              noErr);
    ASSERT_EQ(AECreateAppleEvent(kCoreEventClass, kAEQuitApplication, &address.d, 1234, kAnyTransactionID, &other.d),
              noErr);

    EXPECT_EQ(AttributeOf<AEEventClass>(event.d, keyEventClassAttr, typeType), kCoreEventClass);
    EXPECT_EQ(AttributeOf<AEEventID>(event.d, keyEventIDAttr, typeType), kAEOpenApplication);
    EXPECT_GT(AttributeOf<SInt32>(event.d, keyReturnIDAttr, typeSInt32), 0);
    EXPECT_EQ(AttributeOf<SInt32>(event.d, keyTransactionIDAttr, typeSInt32), 77);
    EXPECT_EQ(AttributeOf<SInt32>(other.d, keyReturnIDAttr, typeSInt32), 1234);
    Desc addressBack;
    ASSERT_EQ(AEGetAttributeDesc(&event.d, keyAddressAttr, typeWildCard, &addressBack.d), noErr);
    EXPECT_EQ(addressBack.d.descriptorType, typeProcessSerialNumber);

    ASSERT_EQ(AEPutParamPtr(&event.d, keyDirectObject, typeUTF8Text, "document", 8), noErr);
    DescType type = 0;
    Size size = 0;
    char buffer[4];
    ASSERT_EQ(AEGetParamPtr(&event.d, keyDirectObject, typeUTF8Text, &type, buffer, sizeof buffer, &size), noErr);
    EXPECT_EQ(std::string(buffer, 4), "docu");
    EXPECT_EQ(size, 8);
    ASSERT_EQ(AESizeOfParam(&event.d, keyDirectObject, &type, &size), noErr);
    ASSERT_EQ(AEDeleteParam(&event.d, keyDirectObject), noErr);
    EXPECT_EQ(AEGetParamPtr(&event.d, keyDirectObject, typeWildCard, &type, buffer, 4, &size), errAEDescNotFound);

    Desc record;
    AECreateList(nullptr, 0, true, &record.d);
    AEEventClass eventClass = kCoreEventClass;
    EXPECT_EQ(AEGetAttributePtr(&record.d, keyEventClassAttr, typeType, &type, &eventClass, 4, &size),
              errAENotAppleEvent);
    EXPECT_EQ(AEPutAttributePtr(&record.d, keyEventClassAttr, typeType, &eventClass, 4), errAENotAppleEvent);
}

// An event with a list and a record inside, as the flat form and container data must keep it.
void MakeRichEvent(AppleEvent& outEvent)
{
    ProcessSerialNumber target{0, kCurrentProcess};
    Desc address(typeProcessSerialNumber, &target, sizeof target), list, record;
    AECreateAppleEvent(FourCC("test"), FourCC("rich"), &address.d, 5, 6, &outEvent);
    AECreateList(nullptr, 0, false, &list.d);
    AECreateList(nullptr, 0, true, &record.d);
    double pi = 3.25;
    AEPutPtr(&list.d, 0, typeIEEE64BitFloatingPoint, &pi, sizeof pi);
    AEPutPtr(&list.d, 0, typeUTF8Text, "text", 4);
    AEPutKeyDesc(&record.d, FourCC("list"), &list.d);
    AEPutParamDesc(&outEvent, keyDirectObject, &record.d);
    AEPutParamPtr(&outEvent, FourCC("name"), typeChar, "flat", 4);
}

TEST_F(AEDescriptors, FlatFormAndContainerDataRoundTripAndDamageIsRefused)
{
    Desc event;
    MakeRichEvent(event.d);
    Size size = AESizeOfFlattenedDesc(&event.d);
    std::vector<char> flat(static_cast<std::size_t>(size));
    Size written = 0;
    EXPECT_EQ(AEFlattenDesc(&event.d, flat.data(), size - 1, &written), errAEBufferTooSmall);
    ASSERT_EQ(AEFlattenDesc(&event.d, flat.data(), size, &written), noErr);
    EXPECT_EQ(written, size);

    Desc restored;
    ASSERT_EQ(AEUnflattenDesc(flat.data(), &restored.d), noErr);
    EXPECT_TRUE(SameDescs(event.d, restored.d));
    Desc record, list;
    ASSERT_EQ(AEGetParamDesc(&restored.d, keyDirectObject, typeAERecord, &record.d), noErr);
    ASSERT_EQ(AEGetKeyDesc(&record.d, FourCC("list"), typeAEList, &list.d), noErr);
    double pi = 0;
    ASSERT_EQ(AEGetNthPtr(&list.d, 1, typeIEEE64BitFloatingPoint, nullptr, nullptr, &pi, sizeof pi, nullptr), noErr);
    EXPECT_EQ(pi, 3.25);

    // A container's data makes the same container again.
    std::vector<char> data(std::size_t(AEGetDescDataSize(&list.d)));
    AEGetDescData(&list.d, data.data(), Size(data.size()));
    Desc rebuilt(typeAEList, data.data(), Size(data.size()));
    EXPECT_TRUE(SameDescs(list.d, rebuilt.d));

    auto unflatten = [](std::vector<char> inBytes) {
        Desc result;
        OSErr status = AEUnflattenDesc(inBytes.data(), &result.d);
        EXPECT_EQ(status == noErr, result.d.dataHandle != nullptr);
        return status;
    };
    // A newer version, a length one byte short of the contents, an unknown kind.
    for (auto [at, value, status] : {std::tuple<std::size_t, char, OSErr>{5, 2, errAENewerVersion},
                                     {11, char(flat[11] - 1), errAECorruptData},
                                     {16, 9, errAECorruptData}}) {
        std::vector<char> damaged = flat;
        damaged[at] = value;
        EXPECT_EQ(unflatten(damaged), status) << "byte " << at;
    }

    // Whatever byte is damaged, the result is a descriptor or a refusal, never a fault.
    for (std::size_t i = 12; i < flat.size(); ++i) {
        std::vector<char> damaged = flat;
        damaged[i] = char(0xFF);
        OSErr status = unflatten(damaged);
        EXPECT_TRUE(status == noErr || status == errAECorruptData) << "byte " << i << ": " << status;
    }
}

}  // namespace
