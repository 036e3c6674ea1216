#include "served_page.h"

#include <gtest/gtest.h>

namespace nerova_zel::test {

ServedPage::ServedPage(FrameRequest request, ViewSettings settings) : request_(std::move(request)) {
  settings.frames.settings = request_;
  settings.frames.colour = request_.colour;
  settings.frames.library = settings.frames.library.empty() ? NEROVA_LIBRARY : settings.frames.library;
  settings.frames.calibrations.push_back({"none", std::nullopt, std::nullopt});
  settings.tell_address = [this](const std::string& address) { addresses_.push_back(address); };
  frames_ = std::make_unique<ViewedInputs>(request_, nullptr, std::size_t{1} << 20U);
  viewer_ = start_viewer(settings, *frames_);
  const std::string address = addresses_.at(0);
  port_ = std::stoi(address.substr(address.rfind(':') + 1));
  client_ = std::make_unique<httplib::Client>("127.0.0.1", port_);
  const auto opened = client_->Get(address.substr(address.find("/?")).c_str());
  EXPECT_EQ(opened->status, 303);
  const std::string set = opened->get_header_value("Set-Cookie");
  cookie_ = set.substr(0, set.find(';'));
}

httplib::Result ServedPage::get(const std::string& target) {
  return client_->Get(target.c_str(), httplib::Headers{{"Cookie", cookie_}});
}

nlohmann::json ServedPage::json(const std::string& target, int status) {
  const auto reply = get(target);
  EXPECT_EQ(reply->status, status) << target << ": " << reply->body;
  return nlohmann::json::parse(reply->body, nullptr, false);
}

std::map<std::string, std::string> ServedPage::images(const std::string& query, nlohmann::json* head) {
  const auto reply = get("/api/images?" + query);
  EXPECT_EQ(reply->status, 200) << query << ": " << reply->body;
  std::uint64_t first_word = 0;
  std::memcpy(&first_word, reply->body.data(), sizeof first_word);
  const auto length = static_cast<std::size_t>(first_word);
  const auto document = nlohmann::json::parse(reply->body.substr(8, length));
  std::map<std::string, std::string> arrays;
  for (const auto& image : document.at("images")) {
    const std::size_t offset = image.at("offset");
    EXPECT_EQ(offset % 8, 0U);
    arrays[image.at("name")] = reply->body.substr(8 + length + offset, image.at("bytes"));
  }
  if (head != nullptr) {
    *head = document;
  }
  return arrays;
}

}  // namespace nerova_zel::test
