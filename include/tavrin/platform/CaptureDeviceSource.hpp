#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::platform {

/// Four-character media type codes a capture device may deliver.
namespace CaptureMediaType {
inline constexpr const char* video = "vide";           ///< Video.
inline constexpr const char* audio = "soun";           ///< Sound.
inline constexpr const char* text = "text";            ///< Text.
inline constexpr const char* depthData = "dpth";       ///< Depth maps.
inline constexpr const char* closedCaption = "clcp";   ///< Closed captions.
inline constexpr const char* metadata = "meta";        ///< Timed metadata.
inline constexpr const char* metadataObject = "mobj";  ///< Detected objects (faces, codes).
inline constexpr const char* subtitle = "sbtl";        ///< Subtitles.
inline constexpr const char* timecode = "tmcd";        ///< Time codes.
}  // namespace CaptureMediaType

/// A media time: value / timescale seconds, with flags and epoch.
struct MediaTime {
  std::int64_t value = 0;      ///< The count of timescale units.
  std::int32_t timescale = 0;  ///< Units per second.
  std::uint32_t flags = 0;     ///< Raw option set (valid, rounded, infinite, ...).
  std::int64_t epoch = 0;      ///< Distinguishes otherwise equal times of different loops.
};

/// The format description of a device's active format.
struct FormatDescription {
  std::int32_t width = 0;          ///< Width in pixels.
  std::int32_t height = 0;         ///< Height in pixels.
  MediaTime frameDuration;         ///< The duration of one frame.
  std::uint32_t frameQuanta = 0;   ///< Frames per sample.
  std::uint32_t mediaType = 0;     ///< Four-character code.
  std::uint32_t mediaSubType = 0;  ///< Four-character code.
};

/// Facts of a device's active depth-data format.
struct DepthDataFormat {
  ///@{
  /// Whether the format supports the feature its name says.
  bool isGlobalToneMappingSupported = false;
  bool isHighestPhotoQualitySupported = false;
  bool isMultiCamSupported = false;
  bool isPortraitEffectsMatteStillImageDeliverySupported = false;
  ///@}
  std::int64_t autoFocusSystem = 0;  ///< Raw value.
  bool isVideoBinned = false;        ///< Pixels are binned in video.
  bool isVideoHDRSupported = false;  ///< Video can be captured in high dynamic range.
};

/// A camera or microphone as capture hardware, as it stands at the moment it is read.
struct CaptureDevice {
  std::string deviceType;        ///< For example "AVCaptureDeviceTypeBuiltInWideAngleCamera".
  std::string localizedName;     ///< The name shown to the user.
  bool isConnected = false;      ///< Connected and usable now.
  bool isVirtualDevice = false;  ///< Made of several physical devices.
  std::int64_t constituentDeviceCount = 0;  ///< The physical devices of a virtual one.
  float lensAperture = 0;                   ///< The f-number.
  std::int64_t position = 0;                ///< 0 unspecified, 1 back, 2 front (raw value).
  std::vector<std::string> mediaTypes;      ///< The CaptureMediaType codes it delivers.
  double videoZoomFactor = 1;               ///< The current zoom.
  double minAvailableVideoZoomFactor = 1;   ///< The least zoom available now.
  double maxAvailableVideoZoomFactor = 1;   ///< The greatest zoom available now.
  ///@{
  /// Flash and zoom state now.
  bool isFlashAvailable = false, isFlashActive = false, isRampingVideoZoom = false;
  ///@}
  std::vector<std::int64_t> supportedFocusModes;  ///< Raw focus modes it supports.
  ///@{
  /// Focus capabilities and state now.
  bool isFocusPointOfInterestSupported = false, isAdjustingFocus = false;
  bool isSmoothAutoFocusEnabled = false, isSmoothAutoFocusSupported = false;
  bool isAutoFocusRangeRestrictionSupported = false;
  ///@}
  ///@{
  /// Flash and torch hardware and the torch's state now.
  bool hasFlash = false, hasTorch = false, isTorchActive = false, isTorchAvailable = false;
  ///@}
  std::int64_t torchMode = 0;     ///< Raw value.
  float maxWhiteBalanceGain = 1;  ///< The greatest gain a white-balance channel takes.
  std::optional<DepthDataFormat> activeDepthDataFormat;  ///< Absent without depth data.
  FormatDescription activeFormat;                        ///< The format it captures in.
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
