// How the descriptor calls reach the value behind a descriptor argument, answering the
// status the platform gives for a missing or foreign descriptor.
#pragma once

#include "AEValue.h"

namespace carbon::ae {

// paramErr for a NULL argument, errAENotAEDesc for a data handle that is no descriptor's.
OSErr Read(const AEDesc* inDesc, const Value*& outValue);
// As Read; a null descriptor has no value to change, so it answers errAEWrongDataType.
OSErr Write(AEDesc* ioDesc, Value*& outValue);

// The arguments of a call that takes data by pointer and size.
bool ValidData(const void* inDataPtr, Size inDataSize);

// The size of the data a value gives out: its bytes, or a container's data.
Size DataSize(const Value& inValue);
// What the AESizeOf... calls answer for an item, field or attribute.
OSErr SizeOfEntry(const Entry& inEntry, DescType* outTypeCode, Size* outDataSize);

// The data that AECreateDesc and the put calls make of a type and its bytes: a container
// type's bytes are read back as that container.
OSErr MakeValue(DescType inType, const void* inDataPtr, Size inDataSize, Value& outValue);

}  // namespace carbon::ae
