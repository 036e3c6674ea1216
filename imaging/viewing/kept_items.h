#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace nerova_zel {

/**
 * Keeps what was read or computed, by name, until more than a bound is kept: then what was not asked for longest goes
 * first. What is larger than the bound is not kept. Who holds an item keeps it alive. Thread-safe.
 */
class KeptItems {
 public:
  explicit KeptItems(std::size_t most_bytes) : most_bytes_(most_bytes) {}

  /** NULL where it is not kept (any more). The type is the one that it was added as. */
  template <class Item>
  std::shared_ptr<const Item> find(const std::string& name) {
    return std::static_pointer_cast<const Item>(find_any(name));
  }

  /** Replaces an item of the same name. */
  void add(const std::string& name, std::shared_ptr<const void> item, std::size_t bytes);

  /** At most the bound. */
  std::size_t bytes() const;

 private:
  struct Place {
    std::string name;
    std::shared_ptr<const void> item;
    std::size_t bytes;
  };

  std::shared_ptr<const void> find_any(const std::string& name);

  const std::size_t most_bytes_;
  mutable std::mutex mutex_;
  std::size_t bytes_ = 0;
  std::list<Place> places_;  ///< the one asked for last comes first
  std::map<std::string, std::list<Place>::iterator> by_name_;
};

}  // namespace nerova_zel
