#include "platform/profile/Permissions.hpp"

#include <string>

namespace tavrin::platform {

void Permissions::requestAccess(Permission permission, AccessHandler handler) {
  prompt(permission,
         [handler = std::move(handler)](std::int64_t status, std::optional<PlatformError> error) {
           handler(status == AuthorizationStatus::authorized, std::move(error));
         });
}

void Permissions::refuseEntityType(std::int64_t entityType, AccessHandler handler) {
  _threads.run([entityType, handler = std::move(handler)] {
    handler(false,
            PlatformError{"The entity type " + std::to_string(entityType) + " is not supported."});
  });
}

}  // namespace tavrin::platform
