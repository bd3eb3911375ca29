// Resource files built byte by byte, as the platform lays them out.
#pragma once

#include <Carbon/Resources.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace spindeck::test {

struct Resource {
    ResType type;
    ResID id;
    std::string data;
    std::string name{};  // empty for none
    UInt8 attributes = 0;
};

inline void Put(std::vector<UInt8>& ioBytes, std::size_t inAt, UInt32 inValue, unsigned inWidth)
{
    for (unsigned i = 0; i < inWidth; ++i)
        ioBytes[inAt + i] = UInt8(inValue >> (8 * (inWidth - 1 - i)));
}

inline void Append(std::vector<UInt8>& ioBytes, UInt32 inValue, unsigned inWidth)
{
    ioBytes.resize(ioBytes.size() + inWidth);
    Put(ioBytes, ioBytes.size() - inWidth, inValue, inWidth);
}

// A resource file as the platform lays it out: the header, 240 reserved bytes, the data, then
// the map. Resources of one type are given next to each other.
struct ResourceImage {
    std::vector<UInt8> bytes;
    std::size_t map = 0;       // where the map starts
    std::size_t firstRef = 0;  // where the first reference lies
};

inline ResourceImage BuildResourceFile(const std::vector<Resource>& inResources)
{
    std::vector<UInt8> data, names, references, types(2);
    std::vector<std::pair<ResType, std::size_t>> runs;  // type, first resource
    for (const Resource& resource : inResources) {
        if (runs.empty() || runs.back().first != resource.type)
            runs.emplace_back(resource.type, references.size());
        for (auto [value, width] : {std::pair<UInt32, unsigned>{UInt16(resource.id), 2},
                                    {resource.name.empty() ? 0xFFFF : UInt32(names.size()), 2},
                                    {resource.attributes, 1},
                                    {UInt32(data.size()), 3},
                                    {0, 4}})
            Append(references, value, width);
        Append(data, UInt32(resource.data.size()), 4);
        data.insert(data.end(), resource.data.begin(), resource.data.end());
        if (!resource.name.empty())
            names.push_back(UInt8(resource.name.size()));
        names.insert(names.end(), resource.name.begin(), resource.name.end());
    }
    Put(types, 0, UInt32(runs.size() - 1), 2);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        std::size_t next = i + 1 < runs.size() ? runs[i + 1].second : references.size();
        Append(types, runs[i].first, 4);
        Append(types, UInt32((next - runs[i].second) / 12 - 1), 2);
        Append(types, UInt32(2 + 8 * runs.size() + runs[i].second), 2);
    }
    ResourceImage image{std::vector<UInt8>(256), 256 + data.size(), 256 + data.size() + 28 + types.size()};
    image.bytes.resize(image.map + 28);
    std::copy(data.begin(), data.end(), image.bytes.begin() + 256);
    Put(image.bytes, image.map + 24, 28, 2);
    Put(image.bytes, image.map + 26, UInt32(28 + types.size() + references.size()), 2);
    for (const auto* part : {&types, &references, &names})
        image.bytes.insert(image.bytes.end(), part->begin(), part->end());
    for (std::size_t header : {std::size_t(0), image.map})
        for (auto [at, value] : {std::pair<int, std::size_t>{0, 256},
                                 {4, image.map},
                                 {8, data.size()},
                                 {12, image.bytes.size() - image.map}})
            Put(image.bytes, header + std::size_t(at), UInt32(value), 4);
    return image;
}

inline std::string StringList(const std::vector<std::string>& inStrings)
{
    std::string list{char(inStrings.size() >> 8), char(inStrings.size())};
    for (const std::string& text : inStrings)
        list += char(text.size()) + text;
    return list;
}

}  // namespace spindeck::test
