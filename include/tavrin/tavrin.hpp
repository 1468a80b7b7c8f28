#pragma once

// The whole public interface of tavrinsdk.
#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>
#include <tavrin/error.hpp>
#include <tavrin/observer.hpp>
#include <tavrin/options.hpp>
#include <tavrin/platform/Platform.hpp>
#include <tavrin/service.hpp>
#include <tavrin/version.hpp>
