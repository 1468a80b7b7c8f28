#include "platform/linux/LinuxDeviceInfo.hpp"

#include "platform/linux/OsRelease.hpp"
#include "platform/linux/VendorIdentifier.hpp"
#include "platform/linux/hostApplication.hpp"
#include "platform/linux/localeFacts.hpp"
#include "platform/linux/readTextFile.hpp"
#include "platform/linux/timeZoneFacts.hpp"
#include "platform/linux/userDirectories.hpp"

#include <sys/statvfs.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tavrin::platform {

namespace {

std::string readModel(const std::vector<std::string>& paths) {
  for (const auto& path : paths) {
    if (const auto text = readTextFile(path, 4096)) {
      const auto line = firstLine(*text);
      if (!line.empty()) return std::string(line);
    }
  }
  return "Linux";
}

std::string kernelRelease() {
  utsname names{};
  if (uname(&names) != 0) return {};
  return names.release;
}

std::optional<std::int64_t> bytes(std::uint64_t blocks, std::uint64_t blockSize) {
  std::int64_t total = 0;
  if (__builtin_mul_overflow(blocks, blockSize, &total)) return std::nullopt;
  return total;
}

}  // namespace

LinuxDeviceInfo::LinuxDeviceInfo(std::string applicationIdentifier, const LinuxSystemFiles& files)
    : _model(readModel(files.model)) {
  std::optional<OsRelease> release;
  for (const auto& path : files.osRelease) {
    if ((release = OsRelease::read(path))) break;
  }
  _systemName = release ? release->value("NAME").value_or("Linux") : "Linux";
  auto version = release ? release->value("VERSION_ID") : std::nullopt;
  _systemVersion = version && !version->empty() ? *version : kernelRelease();

  if (const auto machineId = readTextFile(files.machineId, 4096)) {
    _identifierForVendor =
        VendorIdentifier::derive(*machineId, hostApplication(std::move(applicationIdentifier)));
  }
}

std::array<std::uint8_t, 256> LinuxDeviceInfo::machine() {
  std::array<std::uint8_t, 256> field{};
  utsname names{};
  if (uname(&names) == 0) {
    const std::string_view text(names.machine, strnlen(names.machine, sizeof names.machine));
    std::copy_n(text.begin(), std::min(text.size(), field.size()), field.begin());
  }
  return field;
}

std::optional<FileSystemSizes> LinuxDeviceInfo::homeFileSystemSizes() {
  const auto home = homeDirectory();
  struct statvfs stats {};
  if (home.empty() || statvfs(home.c_str(), &stats) != 0) return std::nullopt;
  const std::uint64_t blockSize = stats.f_frsize != 0 ? stats.f_frsize : stats.f_bsize;
  return FileSystemSizes{bytes(stats.f_blocks, blockSize), bytes(stats.f_bavail, blockSize)};
}

std::uint64_t LinuxDeviceInfo::physicalMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

LocaleFacts LinuxDeviceInfo::currentLocale() { return localeFacts(icu::Locale::getDefault()); }

TimeZoneFacts LinuxDeviceInfo::currentTimeZone(double secondsSince1970) {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  if (!zone) return {};
  return timeZoneFacts(*zone, icu::Locale::getDefault(), secondsSince1970);
}

std::optional<std::string> LinuxDeviceInfo::libraryBundleString(const std::string& key) {
#ifdef TAVRIN_SDK_IDENTIFIER
  if (key == "SDKIdentifier") return std::string(TAVRIN_SDK_IDENTIFIER);
#else
  static_cast<void>(key);
#endif
  return std::nullopt;
}

}  // namespace tavrin::platform
