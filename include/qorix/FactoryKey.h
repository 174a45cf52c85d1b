#pragma once

namespace qorix {

/// What the constructors of `Class` ask for: only the factories of `Class` can make one, so objects
/// come from them alone, those of subclasses, too. A subclass inherits the constructor
/// ("using Base::Base;") or hands the key on.
template <class Class>
class FactoryKey {
  friend Class;
  explicit FactoryKey() = default;
};

}  // namespace qorix
