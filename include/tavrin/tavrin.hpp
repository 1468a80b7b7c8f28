#pragma once

// The whole public interface of tavrinsdk.
#include <tavrin/error.hpp>
#include <tavrin/observer.hpp>
#include <tavrin/platform/Platform.hpp>
#include <tavrin/version.hpp>
