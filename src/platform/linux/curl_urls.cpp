#include "platform/linux/curl_urls.h"

#include <curl/curl.h>

#include "foundation/encodings.h"
#include "foundation/unique_handle.h"
#include "platform/linux/internet_codes.h"

namespace platform {
namespace {

struct UrlTraits {
  using Type = CURLU*;
  static Type Invalid() { return nullptr; }
  static void Close(Type url) { curl_url_cleanup(url); }
};

std::string UrlPart(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) return {};
  std::string copy = text;
  curl_free(text);
  return copy;
}

}  // namespace

bool HasScheme(std::string_view url, std::string_view scheme) {
  return tmw::LowerCase(url.substr(0, scheme.size() + 3)) == std::string(scheme) + "://";
}

ports::Outcome<std::string> AcceptUrl(const std::string& text) {
  using Result = ports::Outcome<std::string>;
  // Only forms that the callers recognise too are accepted: what libcurl alone took for HTTP
  // ("http:/host") would escape the check of its status.
  const bool has_scheme =
      HasScheme(text, "http") || HasScheme(text, "https") || HasScheme(text, "ftp");
  const bool is_web_name = tmw::LowerCase(text.substr(0, 4)) == "www.";
  if (!has_scheme && !is_web_name) return Result::Failure(internet_codes::kUnrecognizedScheme);
  std::string url = ResolveUrl("", is_web_name ? "http://" + text : text);
  if (url.empty()) return Result::Failure(internet_codes::kInvalidUrl);
  return Result::Success(std::move(url));
}

std::string ResolveUrl(const std::string& base, const std::string& target) {
  constexpr unsigned kFlags = CURLU_URLENCODE | CURLU_NON_SUPPORT_SCHEME;
  const tmw::UniqueHandle<UrlTraits> url(curl_url());
  if (!base.empty() && curl_url_set(url.Get(), CURLUPART_URL, base.c_str(), kFlags) != CURLUE_OK)
    return {};
  if (curl_url_set(url.Get(), CURLUPART_URL, target.c_str(), kFlags) != CURLUE_OK) return {};
  return UrlPart(url.Get(), CURLUPART_URL);
}

UrlParts SplitUrl(const std::string& url) {
  const tmw::UniqueHandle<UrlTraits> parts(curl_url());
  if (curl_url_set(parts.Get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return {};
  return {UrlPart(parts.Get(), CURLUPART_SCHEME), UrlPart(parts.Get(), CURLUPART_HOST)};
}

}  // namespace platform
