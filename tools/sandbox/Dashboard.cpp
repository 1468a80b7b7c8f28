#include "Dashboard.hpp"

#include "DashboardAssets.hpp"
#include "DashboardJson.hpp"
#include "SandboxExchanges.hpp"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

// A page shows this many rows of a section at once, and may ask for at most
// this many.
constexpr std::size_t defaultRows = 100;
constexpr std::size_t mostRows = 1000;

// A refusal of the API, answered with its document.
struct ApiRefusal : std::runtime_error {
  ApiRefusal(int code, std::string_view title, const std::string& detail)
      : std::runtime_error(detail), answer(Answer::error(code, title, detail)) {}
  Answer answer;
};

// A number of the query, `fallback` when it is absent, at most `most`.
std::uint64_t queryNumber(const httplib::Request& request, const char* name, std::uint64_t fallback,
                          std::uint64_t most) {
  if (!request.has_param(name)) return fallback;
  const std::string text = request.get_param_value(name);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw ApiRefusal(400, "request_malformed",
                     std::string("the parameter \"") + name + "\" must be a number");
  }
  return std::min(number, most);
}

std::int64_t uploadId(const httplib::Request& request) {
  std::int64_t id = 0;
  const std::string& text = request.matches[1].str();
  std::from_chars(text.data(), text.data() + text.size(), id);
  return id;
}

void sendJson(httplib::Response& response, const json& document) {
  response.set_content(document.dump(-1, ' ', false, json::error_handler_t::replace),
                       "application/json");
}

void sendFile(httplib::Response& response, const std::string& content, const char* type,
              const std::string& name) {
  response.set_header("Content-Disposition", "attachment; filename=\"" + name + "\"");
  response.set_content(content, type);
}

// Runs a handler of the API, answering its refusal as a document.
httplib::Server::Handler api(
    std::function<void(const httplib::Request&, httplib::Response&)> handle) {
  return
      [handle = std::move(handle)](const httplib::Request& request, httplib::Response& response) {
        try {
          handle(request, response);
        } catch (const ApiRefusal& refusal) {
          response.status = refusal.answer.status;
          response.set_content(refusal.answer.body, "application/json");
        }
      };
}

}  // namespace

Dashboard::Dashboard(httplib::Server& router, const SandboxStore& store,
                     const DatasetValidator& validator, const ExchangeLog& exchanges,
                     std::counting_semaphore<>& permits, const StopSignal& stop,
                     std::chrono::seconds longestPoll)
    : _store(store),
      _validator(validator),
      _exchanges(exchanges),
      _permits(permits),
      _stop(stop),
      _longestPoll(longestPoll) {
  const auto asset = [&router](const char* path, std::string_view content, const char* type) {
    router.Get(path, [content, type](const httplib::Request&, httplib::Response& response) {
      response.set_header("Cache-Control", "no-cache");
      response.set_content(content.data(), content.size(), type);
    });
  };
  asset("/", dashboardPage, "text/html; charset=utf-8");
  asset("/dashboard.js", dashboardScript, "text/javascript; charset=utf-8");
  asset("/dashboard.css", dashboardStyle, "text/css; charset=utf-8");

  const auto stored = [this](const httplib::Request& request) {
    const std::int64_t id = uploadId(request);
    auto upload = _store.upload(id);
    if (!upload) throw ApiRefusal(404, "upload_not_found", "no upload " + std::to_string(id));
    return std::move(*upload);
  };
  router.Get("/api/uploads", api([this](const httplib::Request&, httplib::Response& response) {
               json uploads = json::array();
               for (const auto& upload : _store.list()) uploads.push_back(uploadSummary(upload));
               sendJson(response, {{"uploads", std::move(uploads)}});
             }));
  router.Get(R"(/api/uploads/(\d+))",
             api([stored](const httplib::Request& request, httplib::Response& response) {
               sendJson(response, uploadDetail(stored(request)));
             }));
  router.Get(R"(/api/uploads/(\d+)/sections/(\d+))",
             api([this, stored](const httplib::Request& request, httplib::Response& response) {
               const auto parsed = dataset(stored(request));
               std::size_t section = 0;
               const std::string& text = request.matches[2].str();
               std::from_chars(text.data(), text.data() + text.size(), section);
               json rows =
                   sectionRows(*parsed, section, queryNumber(request, "offset", 0, SIZE_MAX),
                               queryNumber(request, "limit", defaultRows, mostRows));
               if (rows.is_null()) {
                 throw ApiRefusal(404, "section_not_found", "no section " + text);
               }
               sendJson(response, rows);
             }));
  router.Get(R"(/api/uploads/(\d+)/dataset)",
             api([this, stored](const httplib::Request& request, httplib::Response& response) {
               const auto upload = stored(request);
               sendFile(response, inflate(upload).json, "application/json",
                        "upload-" + std::to_string(upload.id) + ".json");
             }));
  router.Get(R"(/api/uploads/(\d+)/payload)",
             api([stored](const httplib::Request& request, httplib::Response& response) {
               const auto upload = stored(request);
               sendFile(response, upload.payload, "text/plain",
                        "upload-" + std::to_string(upload.id) + ".base64");
             }));
  router.Get(
      "/api/exchanges", api([this](const httplib::Request& request, httplib::Response& response) {
        const auto after = queryNumber(request, "after", 0, UINT64_MAX);
        const auto wait = std::chrono::seconds(
            queryNumber(request, "wait", 0, static_cast<std::uint64_t>(_longestPoll.count())));
        sendJson(response,
                 exchangesJson(_exchanges.after(after, ExchangeLog::Clock::now() + wait), after));
      }));
}

Dashboard::~Dashboard() = default;

DecodedPayload Dashboard::inflate(const StoredUpload& upload) {
  // Inflating takes memory and time like an upload does: only so many at once.
  _permits.acquire();
  const std::unique_ptr<std::counting_semaphore<>, void (*)(std::counting_semaphore<>*)> permit(
      &_permits, [](std::counting_semaphore<>* permits) { permits->release(); });
  if (_stop.raised()) throw ApiRefusal(503, "sandbox_stopping", "the sandbox is stopping");
  DecodedPayload decoded = _validator.decode(upload.payload);
  if (decoded.jsonSize == 0) {
    throw ApiRefusal(404, "dataset_unavailable",
                     "the payload does not inflate: " + decoded.problem.value_or(""));
  }
  return decoded;
}

std::shared_ptr<const json> Dashboard::dataset(const StoredUpload& upload) {
  {
    const std::lock_guard lock(_mutex);
    if (_cached && _cachedId == upload.id) return _cached;
  }
  const DecodedPayload decoded = inflate(upload);
  auto parsed = std::make_shared<json>();
  if (auto problem = _validator.parse(decoded.json, *parsed)) {
    throw ApiRefusal(404, "dataset_unavailable", "the dataset is not readable JSON: " + *problem);
  }
  const std::lock_guard lock(_mutex);
  _cachedId = upload.id;
  _cached = std::move(parsed);
  return _cached;
}

}  // namespace tavrin::sandbox
