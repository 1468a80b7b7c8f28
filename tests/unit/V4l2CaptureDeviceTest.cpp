#include "SectionJson.hpp"
#include "extractors/CaptureDeviceExtractor.hpp"
#include "platform/linux/LinuxCaptureDeviceSource.hpp"
#include "platform/linux/V4l2CaptureDeviceSource.hpp"

#include <linux/videodev2.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>

namespace tavrin {
namespace {

using platform::V4l2CaptureDeviceSource;
using platform::VideoDevice;
using platform::VideoDevices;

using Json = nlohmann::json;

const std::map<std::string, std::uint32_t> controlIds = {
    {"zoom_absolute", V4L2_CID_ZOOM_ABSOLUTE},
    {"focus_auto", V4L2_CID_FOCUS_AUTO},
    {"focus_absolute", V4L2_CID_FOCUS_ABSOLUTE},
    {"auto_focus_start", V4L2_CID_AUTO_FOCUS_START},
    {"auto_focus_status", V4L2_CID_AUTO_FOCUS_STATUS},
    {"auto_focus_range", V4L2_CID_AUTO_FOCUS_RANGE},
    {"camera_orientation", V4L2_CID_CAMERA_ORIENTATION},
    {"flash_led_mode", V4L2_CID_FLASH_LED_MODE},
};

std::uint32_t number(const Json& text) {
  return static_cast<std::uint32_t>(std::stoul(text.get<std::string>(), nullptr, 0));
}

// A device that answers as the recorded one did: the requests it recorded an
// answer for succeed, every other one fails as the kernel's EINVAL does.
class RecordedDevice final : public VideoDevice {
 public:
  explicit RecordedDevice(Json answers) : _answers(std::move(answers)) {}

  int control(unsigned long request, void* argument) override {
    switch (request) {
      case VIDIOC_QUERYCAP: return queryCapability(*static_cast<v4l2_capability*>(argument));
      case VIDIOC_G_FMT: return format(*static_cast<v4l2_format*>(argument));
      case VIDIOC_G_PARM: return parameters(*static_cast<v4l2_streamparm*>(argument));
      case VIDIOC_QUERYCTRL: {
        auto& info = *static_cast<v4l2_queryctrl*>(argument);
        const Json* control = find(info.id);
        if (control == nullptr) return -1;
        info.minimum = control->at("minimum");
        info.maximum = control->at("maximum");
        info.flags = control->contains("flags") ? number(control->at("flags")) : 0;
        return 0;
      }
      case VIDIOC_G_CTRL: {
        auto& value = *static_cast<v4l2_control*>(argument);
        const Json* control = find(value.id);
        if (control == nullptr) return -1;
        value.value = control->at("value");
        return 0;
      }
      case VIDIOC_QUERYMENU: {
        const auto& item = *static_cast<v4l2_querymenu*>(argument);
        const Json* control = find(item.id);
        const Json items =
            control != nullptr ? control->value("menu", Json::array()) : Json::array();
        return std::find(items.begin(), items.end(), item.index) != items.end() ? 0 : -1;
      }
      default: return -1;
    }
  }

 private:
  int queryCapability(v4l2_capability& capability) const {
    const Json& recorded = _answers.at("capability");
    const auto copy = [](const std::string& text, auto& field) {
      std::memcpy(field, text.data(), std::min(text.size(), sizeof field - 1));
    };
    copy(recorded.at("card"), capability.card);
    copy(recorded.at("bus"), capability.bus_info);
    capability.capabilities = number(recorded.at("capabilities"));
    capability.device_caps = number(recorded.at("device_caps"));
    return 0;
  }
  int format(v4l2_format& answer) const {
    if (!_answers.contains("format")) return -1;
    const Json& recorded = _answers.at("format");
    const std::string code = recorded.at("pixelformat");
    const bool planes = answer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    (planes ? answer.fmt.pix_mp.width : answer.fmt.pix.width) = recorded.at("width");
    (planes ? answer.fmt.pix_mp.height : answer.fmt.pix.height) = recorded.at("height");
    (planes ? answer.fmt.pix_mp.pixelformat : answer.fmt.pix.pixelformat) =
        v4l2_fourcc(code.at(0), code.at(1), code.at(2), code.at(3));
    return 0;
  }
  int parameters(v4l2_streamparm& answer) const {
    if (!_answers.contains("timeperframe")) return -1;
    answer.parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
    answer.parm.capture.timeperframe = {_answers.at("timeperframe").at(0),
                                        _answers.at("timeperframe").at(1)};
    return 0;
  }
  const Json* find(std::uint32_t id) const {
    if (!_answers.contains("controls")) return nullptr;
    for (const auto& [name, control] : _answers.at("controls").items()) {
      if (controlIds.at(name) == id) return &control;
    }
    return nullptr;
  }

  Json _answers;
};

class RecordedDevices final : public VideoDevices {
 public:
  explicit RecordedDevices(Json devices) : _devices(std::move(devices)) {}
  std::vector<std::string> paths() override {
    std::vector<std::string> paths;
    for (const Json& device : _devices) paths.push_back(device.at("path"));
    return paths;
  }
  std::unique_ptr<VideoDevice> open(const std::string& path) override {
    for (const Json& device : _devices) {
      if (device.at("path") == path && !device.value("unopenable", false)) {
        return std::make_unique<RecordedDevice>(device);
      }
    }
    return nullptr;
  }

 private:
  Json _devices;
};

// The recorded machine: a USB webcam with its metadata node, a phone's back
// camera on a multi-planar driver, and a node that cannot be opened. The
// cameras give the rows of the profile that describes them.
TEST(V4l2CaptureDevices, RecordedCamerasGiveTheRowsOfTheProfileOfTheSameCameras) {
  V4l2CaptureDeviceSource source(std::make_unique<RecordedDevices>(
      Json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/linux/v4l2-devices.json"))));
  const auto profile = loadTestProfile("linux-capture-devices.json");
  CaptureDeviceExtractor extractor("CaptureDevice", *profile);
  Element described("CaptureDevice");
  const auto cameras = source.devices();
  ASSERT_TRUE(cameras);
  for (const auto& camera : *cameras) described.append(extractor.makeDeviceRow(camera.value()));
  EXPECT_EQ(sectionValues(std::move(described)), sectionValues(extractor.extract()));
}

// The cameras of the machine the test runs on, when it has any: every device
// listed is a described video camera.
TEST(V4l2CaptureDevices, ThisMachinesCamerasAreDescribed) {
  const auto cameras = platform::makeLinuxCaptureDeviceSource()->devices();
  ASSERT_TRUE(cameras);
  if (cameras->empty()) GTEST_SKIP() << "this machine has no V4L2 camera";
  for (const auto& camera : *cameras) {
    ASSERT_TRUE(camera);
    EXPECT_FALSE(camera->localizedName.empty());
    EXPECT_EQ(camera->mediaTypes, std::vector<std::string>{platform::CaptureMediaType::video});
  }
}

}  // namespace
}  // namespace tavrin
