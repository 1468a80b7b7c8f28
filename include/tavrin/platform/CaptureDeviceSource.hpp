#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::platform {

/// Four-character media type codes a capture device may deliver.
namespace CaptureMediaType {
inline constexpr const char* video = "vide";
inline constexpr const char* audio = "soun";
inline constexpr const char* text = "text";
inline constexpr const char* depthData = "dpth";
inline constexpr const char* closedCaption = "clcp";
inline constexpr const char* metadata = "meta";
inline constexpr const char* metadataObject = "mobj";
inline constexpr const char* subtitle = "sbtl";
inline constexpr const char* timecode = "tmcd";
}  // namespace CaptureMediaType

/// A media time: value / timescale seconds, with flags and epoch.
struct MediaTime {
  std::int64_t value = 0;
  std::int32_t timescale = 0;
  std::uint32_t flags = 0;
  std::int64_t epoch = 0;
};

/// The format description of a device's active format.
struct FormatDescription {
  std::int32_t width = 0, height = 0;  ///< Dimensions in pixels.
  MediaTime frameDuration;
  std::uint32_t frameQuanta = 0;
  std::uint32_t mediaType = 0;     ///< Four-character code.
  std::uint32_t mediaSubType = 0;  ///< Four-character code.
};

/// Facts of a device's active depth-data format.
struct DepthDataFormat {
  bool isGlobalToneMappingSupported = false;
  bool isHighestPhotoQualitySupported = false;
  bool isMultiCamSupported = false;
  bool isPortraitEffectsMatteStillImageDeliverySupported = false;
  std::int64_t autoFocusSystem = 0;  ///< Raw value.
  bool isVideoBinned = false;
  bool isVideoHDRSupported = false;
};

/// A camera or microphone as capture hardware, as it stands at the moment it is read.
struct CaptureDevice {
  std::string deviceType;
  std::string localizedName;
  bool isConnected = false;
  bool isVirtualDevice = false;
  std::int64_t constituentDeviceCount = 0;
  float lensAperture = 0;
  std::int64_t position = 0;                 ///< 0 unspecified, 1 back, 2 front (raw value).
  std::vector<std::string> mediaTypes;       ///< The CaptureMediaType codes it delivers.
  double videoZoomFactor = 1;
  double minAvailableVideoZoomFactor = 1, maxAvailableVideoZoomFactor = 1;
  bool isFlashAvailable = false, isFlashActive = false, isRampingVideoZoom = false;
  std::vector<std::int64_t> supportedFocusModes;  ///< Raw focus modes it supports.
  bool isFocusPointOfInterestSupported = false, isAdjustingFocus = false;
  bool isSmoothAutoFocusEnabled = false, isSmoothAutoFocusSupported = false;
  bool isAutoFocusRangeRestrictionSupported = false;
  bool hasFlash = false, hasTorch = false, isTorchActive = false, isTorchAvailable = false;
  std::int64_t torchMode = 0;  ///< Raw value.
  float maxWhiteBalanceGain = 1;
  std::optional<DepthDataFormat> activeDepthDataFormat;
  FormatDescription activeFormat;
};

/// The capture hardware. Calls answer on the calling thread.
class CaptureDeviceSource {
 public:
  virtual ~CaptureDeviceSource() = default;

  /// The device list: an entry is absent where the list holds something that is
  /// not a capture device; the whole list is absent when the platform gives none.
  virtual std::optional<std::vector<std::optional<CaptureDevice>>> devices() = 0;
};

}  // namespace tavrin::platform
