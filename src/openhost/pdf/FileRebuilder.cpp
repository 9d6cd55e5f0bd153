#include "openhost/pdf/FileRebuilder.h"

#include <algorithm>
#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <sstream>
#include <stdexcept>

namespace openhost {
namespace {

constexpr int kOffsetBytes = 8;
constexpr int kLastFieldBytes = 4;

/// Offsets count from the header, so the file begins with it.
std::string FromHeader(std::string bytes)
{
    const std::size_t header = bytes.find("%PDF-");
    const std::size_t firstObject = bytes.find(" obj");
    if (header != std::string::npos && (firstObject == std::string::npos || header < firstObject))
        return header == 0 ? std::move(bytes) : bytes.substr(header);
    return "%PDF-1.7\n" + bytes;
}

void PutNumber(std::string& data, std::uint64_t number, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) data += static_cast<char>(number >> shift & 0xFF);
}

/// The numbers at the front of a stream of objects, one in two of which is an object's; none when it cannot be read.
std::vector<int> NumbersIn(QPDFObjectHandle stream)
{
    const int count =
        stream.getDict().getKey("/N").isInteger() ? stream.getDict().getKey("/N").getIntValueAsInt() : 0;
    std::shared_ptr<Buffer> content;
    try {
        content = stream.getStreamData(qpdf_dl_generalized);
    } catch (const std::runtime_error&) {
        return {};
    }
    std::istringstream text(std::string(reinterpret_cast<const char*>(content->getBuffer()), content->getSize()));
    std::vector<int> numbers;
    for (int number = 0, offset = 0; static_cast<int>(numbers.size()) < count && text >> number >> offset;)
        numbers.push_back(number);
    return numbers;
}

}  // namespace

CFileRebuilder::CFileRebuilder(std::string bytes) : m_bytes(FromHeader(std::move(bytes))), m_scan(ScanFile(m_bytes))
{
    for (const ScannedObject& object : m_scan.objects)
        m_places[object.number] = {.offset = object.offset, .generation = object.generation};
}

std::string CFileRebuilder::Entry(const char* key) const
{
    for (auto trailer = m_scan.trailers.rbegin(); trailer != m_scan.trailers.rend(); ++trailer)
        if (std::string value = TrailerEntry(*trailer, key); !value.empty()) return key + (' ' + value);
    return {};
}

/// An encryption that no trailer names is still there: without it secret bytes would be taken for the content.
std::string CFileRebuilder::Trailer() const
{
    std::string security = Entry("/Encrypt");
    if (security.empty() && m_scan.securityObject)
        security = "/Encrypt " + std::to_string(*m_scan.securityObject) + " 0 R";
    return Entry("/Root") + Entry("/Info") + Entry("/ID") + security;
}

std::shared_ptr<InputSource> CFileRebuilder::Source(const std::string& name) const
{
    const int table = m_places.empty() ? 1 : m_places.rbegin()->first + 1;
    std::string data, index;
    for (const auto& [number, place] : m_places) {
        index += ' ' + std::to_string(number) + " 1";
        PutNumber(data, place.inStream ? 2 : 1, 1);
        PutNumber(data, place.inStream ? static_cast<std::uint64_t>(place.stream) : place.offset, kOffsetBytes);
        PutNumber(data, static_cast<std::uint64_t>(place.inStream ? place.index : place.generation), kLastFieldBytes);
    }
    std::string file = m_bytes + '\n';
    const std::size_t offset = file.size();
    file += std::to_string(table) + " 0 obj\n<</Type/XRef/Size " + std::to_string(table + 1) + "/W[1 " +
            std::to_string(kOffsetBytes) + ' ' + std::to_string(kLastFieldBytes) + "]/Index[" + index + "]/Length " +
            std::to_string(data.size()) + Trailer() + ">>\nstream\n" + data + "\nendstream\nendobj\nstartxref\n" +
            std::to_string(offset) + "\n%%EOF\n";
    return std::make_shared<BufferInputSource>(name, file);
}

bool CFileRebuilder::AddObjectStreams(QPDF& reading)
{
    const std::map<int, Place> direct = m_places;
    bool any = false;
    for (const auto& [stream, place] : direct) {
        QPDFObjectHandle object = reading.getObject(stream, place.generation);
        if (!object.isStream() || !object.getDict().isDictionaryOfType("/ObjStm")) continue;
        int index = -1;
        for (const int number : NumbersIn(object)) {
            ++index;
            if (number <= 0 || number > kHighestNumber) continue;
            Place& known = m_places[number];
            const bool older = known.offset != 0 && known.offset > place.offset;  // the newer one counts
            if (!older) known = {.inStream = true, .offset = place.offset, .stream = stream, .index = index};
            any = any || !older;
        }
    }
    return any;
}

std::map<std::pair<std::size_t, int>, QPDFObjGen> CFileRebuilder::ByPlace() const
{
    std::map<std::pair<std::size_t, int>, QPDFObjGen> objects;
    for (const auto& [number, place] : m_places)
        objects[{place.offset, place.index}] = QPDFObjGen(number, place.inStream ? 0 : place.generation);
    return objects;
}

}  // namespace openhost
