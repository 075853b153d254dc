#pragma once

namespace bench {

/// Makes small changes that obey and that break each rule, and compares the plug-in's verdicts with
/// those of each YANG form. Writes a line for an exact form that decides otherwise, and for a form
/// that is called inexact but never differs. Returns the number of lines.
int check_agreement();

}  // namespace bench
