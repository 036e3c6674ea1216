#include "viewing/kept_items.h"

#include <utility>

namespace nerova_zel {

std::shared_ptr<const void> KeptItems::find_any(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = by_name_.find(name);
  if (found == by_name_.end()) {
    return nullptr;
  }
  places_.splice(places_.begin(), places_, found->second);
  return found->second->item;
}

void KeptItems::add(const std::string& name, std::shared_ptr<const void> item, std::size_t bytes) {
  std::list<Place> dropped;  // freed when the lock is not held any more
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto drop = [&](std::list<Place>::iterator place) {
    bytes_ -= place->bytes;
    by_name_.erase(place->name);
    dropped.splice(dropped.begin(), places_, place);
  };
  if (const auto found = by_name_.find(name); found != by_name_.end()) {
    drop(found->second);
  }
  if (bytes > most_bytes_) {
    return;
  }
  while (bytes_ + bytes > most_bytes_) {
    drop(std::prev(places_.end()));
  }
  places_.push_front({name, std::move(item), bytes});
  by_name_[name] = places_.begin();
  bytes_ += bytes;
}

std::size_t KeptItems::bytes() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return bytes_;
}

}  // namespace nerova_zel
