#include "broker/broker_client.h"

#include <cstdlib>
#include <mosquitto.h>
#include <stdexcept>

namespace ostrel {

void CheckBroker(int result) {
  if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error(mosquitto_strerror(result));
}

void Introduce(mosquitto* client, const BrokerAddress& address) {
  if (!address.user.empty())
    CheckBroker(mosquitto_username_pw_set(client, address.user.c_str(), address.password.c_str()));
  if (!address.isEncrypted) return;
  // The library's own way to the system's certificates works for its first connection only.
  const char* const told = std::getenv("SSL_CERT_DIR");
  CheckBroker(mosquitto_tls_set(client, nullptr, told ? told : "/etc/ssl/certs", nullptr, nullptr,
                                nullptr));
}

}  // namespace ostrel
