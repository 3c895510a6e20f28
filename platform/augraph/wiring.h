// The units are told what callers have connected.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Which connections are made: all of them anew, so that formats travel along them once more; or those alone
/// that have changed.
enum class Extent { all, changed };

/// From the sources to the head, a node at a time: its inputs, then its initialisation. So a format travels
/// down the whole graph, and whatever a running unit begins to hear is ready to be pulled. At last the units
/// of removed nodes are closed. With the lock.
///
/// Errors   InvalidConnection: nodes in a circle; else the unit's that refused. What is not done then is done
///          by the next call; an input whose new source was refused keeps the old one.
OSStatus wire(Graph& graph, Extent extent);

} // namespace kvxplatform::augraph
