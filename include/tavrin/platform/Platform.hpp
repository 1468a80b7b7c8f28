#pragma once

#include <tavrin/platform/CaptureDeviceSource.hpp>
#include <tavrin/platform/Clock.hpp>
#include <tavrin/platform/ContactStore.hpp>
#include <tavrin/platform/DeviceInfo.hpp>
#include <tavrin/platform/EventStore.hpp>
#include <tavrin/platform/LocationServices.hpp>
#include <tavrin/platform/PhotoLibrary.hpp>

#include <tavrin/export.hpp>

#include <memory>
#include <stdexcept>
#include <string>

namespace tavrin::platform {

/// Everything the library asks of the device it runs on. A host implements it
/// for its operating system, or uses one the library ships. The references
/// returned stay valid for the platform's lifetime. A platform is used by one
/// collection at a time, and its ports are called on the thread that runs the
/// collection. Ports report failure only through the values they return (absent,
/// PlatformError, a status) and must not throw.
///
/// This class and the ports stay as they are for all of 1.x: a later release
/// that asks more of a device declares the new methods in a class derived from
/// the port, which the library recognises with dynamic_cast and does without
/// when a platform built against 1.0 does not implement it.
class Platform {
 public:
  virtual ~Platform() = default;

  virtual DeviceInfo& device() = 0;                   ///< Device and system facts.
  virtual ContactStore& contacts() = 0;               ///< The address book.
  virtual EventStore& events() = 0;                   ///< Calendars, events and reminders.
  virtual PhotoLibrary& photos() = 0;                 ///< The photo library.
  virtual CaptureDeviceSource& captureDevices() = 0;  ///< Cameras and microphones.
  virtual LocationServices& location() = 0;           ///< Location-service capabilities.
  virtual Clock& clock() = 0;                         ///< The wall clock.
  virtual RandomSource& random() = 0;                 ///< Uniform random integers.
};

/// True while the collection run (or dataset preview) that calls a port on this
/// thread has been cancelled or has passed its deadline; false outside a run. A
/// port that walks a large store may check it and return early: the run then
/// stops and discards what the port returned. Cheap enough to check per item.
TAVRIN_EXPORT bool stopRequested() noexcept;

/// The platform of the Linux machine the library runs on. `applicationIdentifier`
/// names the host application for its vendor identifier; empty: the executable's name.
/// Reads a few small system files (os-release, machine-id) before it returns; may be
/// called on any thread; throws nothing but std::bad_alloc.
TAVRIN_EXPORT std::shared_ptr<Platform> makeLinuxPlatform(std::string applicationIdentifier = {});
/// The same, with the host's `consent` deciding access to the personal data stores; its
/// answers are kept for the application in $XDG_STATE_HOME/tavrinsdk/consent/.
TAVRIN_EXPORT std::shared_ptr<Platform> makeLinuxPlatform(std::string applicationIdentifier,
                                                          ConsentCallback consent);

/// Why a device profile could not be loaded: the file, the JSON pointer of the
/// offending value ("" for the whole document) and the reason.
class TAVRIN_EXPORT DeviceProfileError : public std::runtime_error {
 public:
  /// Makes the error; what() reads "FILE: POINTER: REASON" (or "FILE: REASON" for
  /// the whole file), with control characters and bytes that are not UTF-8 escaped.
  DeviceProfileError(std::string file, std::string pointer, std::string reason);
  /// The profile's path.
  const std::string& file() const noexcept { return _file; }
  /// The JSON pointer of the offending value, for example "/contacts/3/birthday".
  const std::string& pointer() const noexcept { return _pointer; }
  /// What is wrong there.
  const std::string& reason() const noexcept { return _reason; }

 private:
  std::string _file, _pointer, _reason;
};

/// A platform read from a device-profile file (a whole phone described in JSON).
/// Blocks while it reads the file; may be called on any thread. Throws
/// DeviceProfileError when the file cannot be read or the profile is malformed;
/// it never half-loads.
TAVRIN_EXPORT std::shared_ptr<Platform> loadDeviceProfile(const std::string& path);

}  // namespace tavrin::platform
