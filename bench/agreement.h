#pragma once

namespace bench {

/// Makes small changes that keep and that break each rule and holds what the plug-in says to them
/// against each YANG form. Writes a line for an exact form that says something else, and for a form
/// that is not exact and never differs. Gives the number of lines.
int check_agreement();

}  // namespace bench
