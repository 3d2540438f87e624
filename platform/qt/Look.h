#pragma once

namespace platform {

/// Makes the toolkit's own style draw every control and every choice so that it can be seen: its
/// outlines are hardly darker than the window, and on a dark window they vanish. A style that the
/// desktop brings along is left as it is.
void installLook();

}  // namespace platform
