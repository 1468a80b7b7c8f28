#include "Commands.hpp"
#include "escapeControls.hpp"

#include <tavrin/error.hpp>

#include <iostream>

namespace tavrin::tool {

int runReportingFailure(const std::function<int()>& step) {
  try {
    return step();
  } catch (const TavrinError& error) {
    std::cerr << "error: " << errorTypeName(error.getErrorType());
    if (error.getErrorMessage()) std::cerr << ": " << escapeControls(*error.getErrorMessage());
    if (!error.requestId().empty()) std::cerr << " (request " << error.requestId() << ")";
    std::cerr << '\n';
    return ExitCode::tavrinErrorBase + rawValue(error.getErrorType());
  } catch (const JsonWriteError& error) {
    std::cerr << "error: JsonWriteError: " << error.what() << '\n';
    return ExitCode::jsonWrite;
  } catch (const platform::DeviceProfileError& error) {
    std::cerr << "error: " << error.what() << '\n';
    return ExitCode::badProfile;
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << '\n';
    return ExitCode::otherFailure;
  }
}

}  // namespace tavrin::tool
