// The built-in coercions. A number converts to another numeric type only when its value
// survives (a fraction or an out-of-range value fails rather than being cut), texts convert
// among the text types, four-character codes among the code types, and serial numbers to
// process ids and back while their process runs.
#include "AECoercion.h"

#include "AEFlatten.h"
#include "AEText.h"

#include <Carbon/Processes.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <variant>

namespace carbon::ae {

namespace {

// Every integer the numeric types hold fits in 128 bits, so integers convert exactly.
using Integer = __int128;
using Number = std::variant<Integer, double>;

template <class T>
std::optional<T> Load(const std::vector<UInt8>& inBytes)
{
    if (inBytes.size() != sizeof(T))
        return std::nullopt;
    T value;
    std::memcpy(&value, inBytes.data(), sizeof value);
    return value;
}

template <class T>
std::vector<UInt8> Store(T inValue)
{
    std::vector<UInt8> bytes(sizeof inValue);
    std::memcpy(bytes.data(), &inValue, sizeof inValue);
    return bytes;
}

template <class T>
std::optional<Number> LoadNumber(const std::vector<UInt8>& inBytes)
{
    std::optional<T> value = Load<T>(inBytes);
    if (!value)
        return std::nullopt;
    if constexpr (std::is_floating_point_v<T>)
        return Number(double(*value));
    else
        return Number(Integer(*value));
}

std::optional<Number> ReadNumber(DescType inType, const std::vector<UInt8>& inBytes)
{
    switch (inType) {
    case typeBoolean:
        return inBytes.size() == 1 ? std::optional(Number(Integer(inBytes[0] != 0))) : std::nullopt;
    case typeTrue:
        return Number(Integer(1));
    case typeFalse:
        return Number(Integer(0));
    case typeSInt16:
        return LoadNumber<SInt16>(inBytes);
    case typeUInt16:
        return LoadNumber<UInt16>(inBytes);
    case typeSInt32:
        return LoadNumber<SInt32>(inBytes);
    case typeUInt32:
        return LoadNumber<UInt32>(inBytes);
    case typeSInt64:
        return LoadNumber<SInt64>(inBytes);
    case typeUInt64:
        return LoadNumber<UInt64>(inBytes);
    case typeIEEE32BitFloatingPoint:
        return LoadNumber<Float32>(inBytes);
    case typeIEEE64BitFloatingPoint:
        return LoadNumber<Float64>(inBytes);
    default:
        return std::nullopt;
    }
}

// An integer value of a number, if it has one exactly.
std::optional<Integer> IntegerOf(const Number& inNumber)
{
    if (const Integer* integer = std::get_if<Integer>(&inNumber))
        return *integer;
    double real = std::get<double>(inNumber);
    // Beyond 2^64 no numeric type can take it anyway; the bound keeps the conversion defined.
    if (!std::isfinite(real) || std::trunc(real) != real || std::fabs(real) > 0x1p64)
        return std::nullopt;
    return Integer(real);
}

template <class T>
std::optional<std::vector<UInt8>> StoreInteger(const Number& inNumber)
{
    std::optional<Integer> value = IntegerOf(inNumber);
    if (!value || *value < Integer(std::numeric_limits<T>::min()) || *value > Integer(std::numeric_limits<T>::max()))
        return std::nullopt;
    return Store(T(*value));
}

template <class T>
std::optional<std::vector<UInt8>> StoreReal(const Number& inNumber)
{
    double real = std::holds_alternative<double>(inNumber) ? std::get<double>(inNumber)
                                                           : double(std::get<Integer>(inNumber));
    T stored = T(real);
    if (std::isfinite(real) && !std::isfinite(stored))
        return std::nullopt;
    return Store(stored);
}

std::optional<std::vector<UInt8>> WriteNumber(DescType inType, const Number& inNumber)
{
    switch (inType) {
    case typeBoolean: {
        std::optional<Integer> value = IntegerOf(inNumber);
        return value && (*value == 0 || *value == 1) ? std::optional(Store(UInt8(*value))) : std::nullopt;
    }
    case typeSInt16:
        return StoreInteger<SInt16>(inNumber);
    case typeUInt16:
        return StoreInteger<UInt16>(inNumber);
    case typeSInt32:
        return StoreInteger<SInt32>(inNumber);
    case typeUInt32:
        return StoreInteger<UInt32>(inNumber);
    case typeSInt64:
        return StoreInteger<SInt64>(inNumber);
    case typeUInt64:
        return StoreInteger<UInt64>(inNumber);
    case typeIEEE32BitFloatingPoint:
        return StoreReal<Float32>(inNumber);
    case typeIEEE64BitFloatingPoint:
        return StoreReal<Float64>(inNumber);
    default:
        return std::nullopt;
    }
}

bool IsCodeType(DescType inType) { return inType == typeType || inType == typeEnumerated || inType == typeKeyword; }

std::optional<std::vector<UInt8>> CoerceProcess(DescType inType, const std::vector<UInt8>& inBytes, DescType inToType)
{
    if (inType == typeProcessSerialNumber && inToType == typeKernelProcessID) {
        std::optional<ProcessSerialNumber> psn = Load<ProcessSerialNumber>(inBytes);
        pid_t pid = 0;
        return psn && GetProcessPID(&*psn, &pid) == noErr ? std::optional(Store(pid)) : std::nullopt;
    }
    if (inType == typeKernelProcessID && inToType == typeProcessSerialNumber) {
        std::optional<pid_t> pid = Load<pid_t>(inBytes);
        ProcessSerialNumber psn{};
        return pid && GetProcessForPID(*pid, &psn) == noErr ? std::optional(Store(psn)) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::vector<UInt8>> CoerceData(DescType inType, const std::vector<UInt8>& inBytes, DescType inToType)
{
    if (std::optional<Number> number = ReadNumber(inType, inBytes))
        return WriteNumber(inToType, *number);
    if (IsTextType(inType) && IsTextType(inToType)) {
        std::optional<std::u16string> text = DecodeText(inType, inBytes);
        return text ? EncodeText(inToType, *text) : std::nullopt;
    }
    if (IsCodeType(inType) && IsCodeType(inToType))
        return inBytes.size() == sizeof(FourCharCode) ? std::optional(inBytes) : std::nullopt;
    return CoerceProcess(inType, inBytes, inToType);
}

}  // namespace

OSErr Coerce(DescType inType, const Value& inValue, DescType inToType, DescType& outType, Value& outValue)
{
    // A record keeps its kind whatever it is called, so any record is one as typeAERecord.
    bool asItIs = inToType == typeWildCard || inToType == inType ||
                  (inToType == typeAERecord && inValue.kind == Kind::Record);
    if (asItIs) {
        outType = inToType == typeWildCard ? inType : inToType;
        outValue = inValue;
        return noErr;
    }
    if (inValue.IsContainer())
        return errAECoercionFail;
    std::optional<std::vector<UInt8>> bytes = CoerceData(inType, inValue.bytes, inToType);
    if (!bytes)
        return errAECoercionFail;
    outType = inToType;
    outValue = Value{};
    outValue.bytes = std::move(*bytes);
    return noErr;
}

OSErr GetAsPtr(DescType inType, const Value& inValue, DescType inDesiredType, DescType* outTypeCode, void* outDataPtr,
               Size inMaximumSize, Size* outActualSize)
{
    if (inMaximumSize < 0 || (outDataPtr == nullptr && inMaximumSize > 0))
        return paramErr;
    DescType type = inType;
    Value coerced;
    if (OSErr status = Coerce(inType, inValue, inDesiredType, type, coerced); status != noErr)
        return status;
    std::vector<UInt8> bytes = coerced.IsContainer() ? ContainerData(coerced) : std::move(coerced.bytes);
    if (std::size_t copied = std::min(bytes.size(), std::size_t(inMaximumSize)); copied > 0)
        std::memcpy(outDataPtr, bytes.data(), copied);
    if (outTypeCode)
        *outTypeCode = type;
    if (outActualSize)
        *outActualSize = Size(bytes.size());
    return noErr;
}

OSErr GetAsDesc(DescType inType, const Value& inValue, DescType inDesiredType, AEDesc* outResult)
{
    if (outResult == nullptr)
        return paramErr;
    AEInitializeDesc(outResult);
    DescType type = inType;
    Value coerced;
    if (OSErr status = Coerce(inType, inValue, inDesiredType, type, coerced); status != noErr)
        return status;
    StoreDesc(type, std::move(coerced), outResult);
    return noErr;
}

}  // namespace carbon::ae
