#pragma once

#include <gtest/gtest.h>
#include <libebook/libebook.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "device/contacts/eds/glib_pointers.h"

namespace kelpin::contract {

// A port of this machine that nobody answers at, as long as it lives.
class SilentPort {
 public:
  SilentPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address_), size), 0);
    EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr*>(&address_), &size), 0);
  }
  ~SilentPort() { close(socket_); }
  SilentPort(const SilentPort&) = delete;
  SilentPort& operator=(const SilentPort&) = delete;

  guint16 Number() const { return ntohs(address_.sin_port); }

 private:
  const int socket_;
  sockaddr_in address_ = {};
};

// Another address book of the session: a local one, or one of a CardDAV server at this port. Gone
// when it is taken away, or with the object.
class ExtraBook {
 public:
  ExtraBook(const char* uid, const char* name, guint16 serverPort = 0) : uid_(uid) {
    device::contacts::ErrorHolder error;
    const device::contacts::ObjectPointer<ESource> source(
        e_source_new_with_uid(uid, nullptr, &error.taken));
    e_source_set_display_name(source.get(), name);
    e_source_set_parent(source.get(), serverPort == 0 ? "local-stub" : "");
    auto* const book = static_cast<ESourceBackend*>(
        e_source_get_extension(source.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK));
    e_source_backend_set_backend_name(book, serverPort == 0 ? "local" : "carddav");
    if (serverPort != 0) {
      auto* const login = static_cast<ESourceAuthentication*>(
          e_source_get_extension(source.get(), E_SOURCE_EXTENSION_AUTHENTICATION));
      e_source_authentication_set_host(login, "127.0.0.1");
      e_source_authentication_set_port(login, serverPort);
      e_source_authentication_set_method(login, "none");
      auto* const dav = static_cast<ESourceWebdav*>(
          e_source_get_extension(source.get(), E_SOURCE_EXTENSION_WEBDAV_BACKEND));
      e_source_webdav_set_resource_path(dav, "/book/");
    }
    const device::contacts::ObjectPointer<ESourceRegistry> registry(
        e_source_registry_new_sync(nullptr, &error.taken));
    EXPECT_TRUE(
        e_source_registry_commit_source_sync(registry.get(), source.get(), nullptr, &error.taken))
        << error.Message();
  }
  ~ExtraBook() { TakeAway(); }
  ExtraBook(const ExtraBook&) = delete;
  ExtraBook& operator=(const ExtraBook&) = delete;

  void TakeAway() {
    if (uid_.empty()) return;
    device::contacts::ErrorHolder error;
    const device::contacts::ObjectPointer<ESourceRegistry> registry(
        e_source_registry_new_sync(nullptr, &error.taken));
    const device::contacts::ObjectPointer<ESource> source(
        e_source_registry_ref_source(registry.get(), uid_.c_str()));
    ASSERT_NE(source, nullptr);
    EXPECT_TRUE(e_source_remove_sync(source.get(), nullptr, &error.taken)) << error.Message();
    uid_.clear();
  }

 private:
  std::string uid_;
};

}  // namespace kelpin::contract
