// Apple event descriptors: typed data, lists, records and Apple events themselves, with
// their keywords and attributes, coercion between descriptor types, and a flat form.
#pragma once

#include <MacTypes.h>

using DescType = ResType;
using AEKeyword = FourCharCode;
using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEReturnID = SInt16;
using AETransactionID = SInt32;

// Descriptor types.
enum : DescType {
    typeNull = FourCC("null"),
    typeBoolean = FourCC("bool"),
    typeTrue = FourCC("true"),
    typeFalse = FourCC("fals"),
    typeSInt16 = FourCC("shor"),
    typeSInt32 = FourCC("long"),
    typeUInt16 = FourCC("ushr"),
    typeUInt32 = FourCC("magn"),
    typeSInt64 = FourCC("comp"),
    typeUInt64 = FourCC("ucom"),
    typeIEEE32BitFloatingPoint = FourCC("sing"),
    typeIEEE64BitFloatingPoint = FourCC("doub"),
    typeShortInteger = typeSInt16,
    typeLongInteger = typeSInt32,
    typeShortFloat = typeIEEE32BitFloatingPoint,
    typeFloat = typeIEEE64BitFloatingPoint,
    typeChar = FourCC("TEXT"),  // text in the system encoding
    typeUTF8Text = FourCC("utf8"),
    typeUnicodeText = FourCC("utxt"),  // UTF-16 in the machine's byte order
    typeType = FourCC("type"),
    typeEnumerated = FourCC("enum"),
    typeKeyword = FourCC("keyw"),
    typeProcessSerialNumber = FourCC("psn "),
    typeKernelProcessID = FourCC("kpid"),  // a pid_t
    typeApplSignature = FourCC("sign"),
    typeData = FourCC("tdta"),
    typeAEList = FourCC("list"),
    typeAERecord = FourCC("reco"),
    typeAppleEvent = FourCC("aevt"),
    typeWildCard = FourCC("****"),
};

enum : AEReturnID { kAutoGenerateReturnID = -1 };
enum : AETransactionID { kAnyTransactionID = 0 };

// What a descriptor's data handle points at is private to the Apple Event Manager; its
// calls are the only way in.
struct OpaqueAEDataStorageType;
using AEDataStorageType = OpaqueAEDataStorageType*;
using AEDataStorage = AEDataStorageType*;

struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;  // NULL for a null descriptor
};
using AEDescPtr = AEDesc*;
using AEAddressDesc = AEDesc;
using AEDescList = AEDesc;
using AERecord = AEDescList;
using AppleEvent = AERecord;
using AppleEventPtr = AppleEvent*;

struct AEKeyDesc {
    AEKeyword descKey;
    AEDesc descContent;
};

// Descriptors. Every descriptor that a call fills is the caller's to dispose of.
void AEInitializeDesc(AEDesc* outDesc);
OSErr AECreateDesc(DescType inTypeCode, const void* inDataPtr, Size inDataSize, AEDesc* outResult);
OSErr AEDisposeDesc(AEDesc* ioDesc);
OSErr AEDuplicateDesc(const AEDesc* inDesc, AEDesc* outResult);
OSErr AEReplaceDescData(DescType inTypeCode, const void* inDataPtr, Size inDataSize, AEDesc* ioDesc);
Size AEGetDescDataSize(const AEDesc* inDesc);
OSErr AEGetDescData(const AEDesc* inDesc, void* outDataPtr, Size inMaximumSize);

// Coercion between numbers, between texts, between type codes, and between serial numbers
// and process ids. typeWildCard and the descriptor's own type give the data unchanged.
OSErr AECoercePtr(DescType inTypeCode, const void* inDataPtr, Size inDataSize, DescType inToType, AEDesc* outResult);
OSErr AECoerceDesc(const AEDesc* inDesc, DescType inToType, AEDesc* outResult);

// Lists and records. Indexes count from 1; putting at index 0 or count + 1 appends.
// A factored list keeps data that all its items begin with: the item type (4 bytes) and,
// after it, the first bytes of every item's data.
OSErr AECreateList(const void* inFactoringPtr, Size inFactoredSize, Boolean inIsRecord, AEDescList* outList);
OSErr AECountItems(const AEDescList* inList, long* outCount);
OSErr AEPutPtr(AEDescList* ioList, long inIndex, DescType inTypeCode, const void* inDataPtr, Size inDataSize);
OSErr AEPutDesc(AEDescList* ioList, long inIndex, const AEDesc* inDesc);
OSErr AEGetNthPtr(const AEDescList* inList, long inIndex, DescType inDesiredType, AEKeyword* outKeyword,
                  DescType* outTypeCode, void* outDataPtr, Size inMaximumSize, Size* outActualSize);
OSErr AEGetNthDesc(const AEDescList* inList, long inIndex, DescType inDesiredType, AEKeyword* outKeyword,
                   AEDesc* outResult);
OSErr AESizeOfNthItem(const AEDescList* inList, long inIndex, DescType* outTypeCode, Size* outDataSize);
OSErr AEDeleteItem(AEDescList* ioList, long inIndex);

Boolean AECheckIsRecord(const AEDesc* inDesc);
OSErr AEPutKeyPtr(AERecord* ioRecord, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr, Size inDataSize);
OSErr AEPutKeyDesc(AERecord* ioRecord, AEKeyword inKeyword, const AEDesc* inDesc);
OSErr AEGetKeyPtr(const AERecord* inRecord, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                  void* outDataPtr, Size inMaximumSize, Size* outActualSize);
OSErr AEGetKeyDesc(const AERecord* inRecord, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult);
OSErr AESizeOfKeyDesc(const AERecord* inRecord, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize);
OSErr AEDeleteKeyDesc(AERecord* ioRecord, AEKeyword inKeyword);

// Apple events: attributes (class, ID, target, return and transaction IDs, ...) and
// parameters. The target is copied into the keyAddressAttr attribute.
OSErr AECreateAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc* inTarget,
                         AEReturnID inReturnID, AETransactionID inTransactionID, AppleEvent* outResult);
OSErr AEPutParamPtr(AppleEvent* ioEvent, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr,
                    Size inDataSize);
OSErr AEPutParamDesc(AppleEvent* ioEvent, AEKeyword inKeyword, const AEDesc* inDesc);
OSErr AEGetParamPtr(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                    void* outDataPtr, Size inMaximumSize, Size* outActualSize);
OSErr AEGetParamDesc(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult);
OSErr AESizeOfParam(const AppleEvent* inEvent, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize);
OSErr AEDeleteParam(AppleEvent* ioEvent, AEKeyword inKeyword);
OSErr AEPutAttributePtr(AppleEvent* ioEvent, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr,
                        Size inDataSize);
OSErr AEPutAttributeDesc(AppleEvent* ioEvent, AEKeyword inKeyword, const AEDesc* inDesc);
OSErr AEGetAttributePtr(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                        void* outDataPtr, Size inMaximumSize, Size* outActualSize);
OSErr AEGetAttributeDesc(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult);
OSErr AESizeOfAttribute(const AppleEvent* inEvent, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize);

// The flat form: a byte string that holds a descriptor of any kind, for storing or sending.
// It is versioned; a form written by a newer version answers errAENewerVersion.
Size AESizeOfFlattenedDesc(const AEDesc* inDesc);
OSStatus AEFlattenDesc(const AEDesc* inDesc, Ptr outBuffer, Size inBufferSize, Size* outActualSize);
OSStatus AEUnflattenDesc(const void* inBuffer, AEDesc* outResult);

// The number of descriptors with data alive in the process, so that tests can see that
// every descriptor was disposed of.
long _AEGetLiveDescriptorCount();
