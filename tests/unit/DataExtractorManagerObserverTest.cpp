#include "collection/DataExtractorManager.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace tavrin {
namespace {

// Writes down every call, in order.
class RecordingObserver : public CollectionObserver {
 public:
  void sourceStarted(std::string_view name) override {
    calls.push_back("started " + std::string(name));
  }
  void sourceFinished(std::string_view name, std::size_t entries,
                      std::chrono::nanoseconds elapsed) override {
    calls.push_back("finished " + std::string(name) + " " + std::to_string(entries));
    EXPECT_GE(elapsed.count(), 0);
  }
  std::vector<std::string> calls;
};

class ThrowingObserver : public CollectionObserver {
 public:
  void sourceStarted(std::string_view) override { throw std::runtime_error("display broke"); }
};

// The observer hears every source start and finish in run order; one that
// throws does not change the run.
TEST(DataExtractorManagerObserver, HearsEverySourceInRunOrderAndCannotBreakTheRun) {
  DataExtractorManager manager(platform::makeLinuxPlatform("observer-test"));
  const auto recording = std::make_shared<RecordingObserver>();
  const RunEvents events(recording, {});
  manager.setEvents(events);
  RecordingObserver& observer = *recording;
  const DatasetDocument document = manager.extractData();
  std::vector<std::string> expected;
  for (std::size_t i = 1; i < document.size(); ++i) {
    expected.push_back("started " + document[i].Name());
    expected.push_back("finished " + document[i].Name() + " " +
                       std::to_string(document[i].ChildElements().size()));
  }
  EXPECT_EQ(observer.calls, expected);
  EXPECT_EQ(observer.calls.size(), 2 * manager.extractors().size());

  const RunEvents throwing(std::make_shared<ThrowingObserver>(), {});
  manager.setEvents(throwing);
  EXPECT_EQ(manager.extractData().size(), document.size());
}

}  // namespace
}  // namespace tavrin
