#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/mediaFileFacts.hpp"

#include <gst/pbutils/pbutils.h>

#include <cmath>

namespace tavrin::platform {
namespace {

// A file whose headers take longer than this to read is listed without facts.
constexpr GstClockTime readLimit = 5 * GST_SECOND;

struct StreamListFree {
  void operator()(GList* list) const { gst_discoverer_stream_info_list_free(list); }
};
struct TagListUnref {
  void operator()(GstTagList* tags) const { gst_tag_list_unref(tags); }
};
struct DateTimeUnref {
  void operator()(GstDateTime* date) const { gst_date_time_unref(date); }
};
struct GDateTimeUnref {
  void operator()(GDateTime* date) const { g_date_time_unref(date); }
};

void readVideoSize(GstDiscovererInfo* info, MediaFileFacts& facts) {
  const std::unique_ptr<GList, StreamListFree> videos(gst_discoverer_info_get_video_streams(info));
  if (!videos) return;
  auto* video = GST_DISCOVERER_VIDEO_INFO(videos->data);
  facts.pixelWidth = gst_discoverer_video_info_get_width(video);
  facts.pixelHeight = gst_discoverer_video_info_get_height(video);
}

// The recording's date and position, where the container carries them (the
// creation time of MP4 and QuickTime, the date of Matroska, Apple's and
// Android's location atoms).
void readTags(GstDiscovererInfo* info, MediaFileFacts& facts) {
  const GstTagList* tags = gst_discoverer_info_get_tags(info);
  if (tags == nullptr) return;
  GstDateTime* raw = nullptr;
  if (gst_tag_list_get_date_time(tags, GST_TAG_DATE_TIME, &raw)) {
    const std::unique_ptr<GstDateTime, DateTimeUnref> date(raw);
    const std::unique_ptr<GDateTime, GDateTimeUnref> full(
        gst_date_time_has_time(date.get()) ? gst_date_time_to_g_date_time(date.get()) : nullptr);
    if (full) {
      facts.creationDate = static_cast<double>(g_date_time_to_unix(full.get())) +
                           g_date_time_get_microsecond(full.get()) / 1e6;
    }
  }
  double latitude = 0, longitude = 0;
  if (gst_tag_list_get_double(tags, GST_TAG_GEO_LOCATION_LATITUDE, &latitude) &&
      gst_tag_list_get_double(tags, GST_TAG_GEO_LOCATION_LONGITUDE, &longitude) &&
      std::abs(latitude) <= 90 && std::abs(longitude) <= 180) {
    facts.location = Coordinate{latitude, longitude};
  }
}

}  // namespace

struct MediaHeaderReader::Discoverer {
  GObjectRef<GstDiscoverer> discoverer;
};

MediaHeaderReader::MediaHeaderReader() : _discoverer(std::make_unique<Discoverer>()) {
  // Safe to call more than once; the host may already have set GStreamer up.
  if (gst_init_check(nullptr, nullptr, nullptr)) {
    _discoverer->discoverer.reset(gst_discoverer_new(readLimit, nullptr));
  }
}

MediaHeaderReader::~MediaHeaderReader() = default;

MediaFileFacts MediaHeaderReader::read(const std::string& path) {
  MediaFileFacts facts;
  if (!_discoverer->discoverer) return facts;
  const GCharRef uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  if (!uri) return facts;
  const GObjectRef<GstDiscovererInfo> info(
      gst_discoverer_discover_uri(_discoverer->discoverer.get(), uri.get(), nullptr));
  // Without a decoder for its streams the container's headers are still read.
  const auto result = info ? gst_discoverer_info_get_result(info.get()) : GST_DISCOVERER_ERROR;
  if (result != GST_DISCOVERER_OK && result != GST_DISCOVERER_MISSING_PLUGINS) return facts;
  const GstClockTime duration = gst_discoverer_info_get_duration(info.get());
  if (GST_CLOCK_TIME_IS_VALID(duration))
    facts.duration = static_cast<double>(duration) / GST_SECOND;
  readVideoSize(info.get(), facts);
  readTags(info.get(), facts);
  return facts;
}

}  // namespace tavrin::platform
