#include "core/session_settings.h"

namespace kelpdex {

SessionSettings& Session() {
  static SessionSettings settings;
  return settings;
}

}  // namespace kelpdex
