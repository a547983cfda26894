// Elements in the order of their schema.
#pragma once

namespace conferix {

struct TSchemaComplexType;
class TXmlNode;

/// Moves a child among its siblings to where the content wants it: after those in place that come no later.
/// What stands right already stays. A child that the content does not know stays too.
void PlaceChild(const TSchemaComplexType& content, TXmlNode& child);

/// The same for all children of an element that stand wrong.
void SortChildren(const TSchemaComplexType& content, TXmlNode& parent);

} // namespace conferix
