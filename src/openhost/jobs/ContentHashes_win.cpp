#include "openhost/jobs/ContentHashes.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

namespace openhost {

namespace {

constexpr std::int64_t kNanosecondsPerTick = 100;
// Some file systems number their files with twice as many bits; what is above is mixed in.
constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;

struct Node {
    std::uint64_t device = 0, number = 0;
};

Node NodeOf(HANDLE file, const BY_HANDLE_FILE_INFORMATION& facts)
{
    FILE_ID_INFO id = {};
    if (GetFileInformationByHandleEx(file, FileIdInfo, &id, sizeof id)) {
        const auto* bytes = id.FileId.Identifier;
        std::uint64_t low = 0, high = 0;
        for (int i = 7; i >= 0; --i) {
            low = low << 8 | bytes[i];
            high = high << 8 | bytes[i + 8];
        }
        return {id.VolumeSerialNumber, low ^ (high * kMix)};
    }
    return {facts.dwVolumeSerialNumber, std::uint64_t{facts.nFileIndexHigh} << 32 | facts.nFileIndexLow};
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    const platform::CHandle file(CreateFileW(platform::WidePath(path).c_str(), FILE_READ_ATTRIBUTES,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION facts = {};
    FILE_BASIC_INFO times = {};
    if (!file.Valid() || GetFileType(file.Get()) != FILE_TYPE_DISK ||
        !GetFileInformationByHandle(file.Get(), &facts) || (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ||
        !GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &times, sizeof times))
        return std::nullopt;
    const Node node = NodeOf(file.Get(), facts);
    return FileIdentity{node.device, node.number, std::uint64_t{facts.nFileSizeHigh} << 32 | facts.nFileSizeLow,
                        times.LastWriteTime.QuadPart * kNanosecondsPerTick,
                        times.ChangeTime.QuadPart * kNanosecondsPerTick};
}

}  // namespace openhost
