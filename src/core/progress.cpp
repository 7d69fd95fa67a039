#include "core/progress.h"

namespace kelpdex {

namespace detail {
ProgressSink* activeProgressSink = nullptr;
}

ProgressSink* SetProgressSink(ProgressSink* sink) {
  ProgressSink* previous = detail::activeProgressSink;
  detail::activeProgressSink = sink;
  return previous;
}

}  // namespace kelpdex
