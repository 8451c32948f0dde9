#include "broker/broker_client.h"

#include <mosquitto.h>
#include <stdexcept>

namespace ostrel {

void CheckBroker(int result) {
  if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error(mosquitto_strerror(result));
}

void Introduce(mosquitto* client, const BrokerAddress& address) {
  if (!address.user.empty())
    CheckBroker(mosquitto_username_pw_set(client, address.user.c_str(), address.password.c_str()));
  if (address.isEncrypted) CheckBroker(mosquitto_int_option(client, MOSQ_OPT_TLS_USE_OS_CERTS, 1));
}

}  // namespace ostrel
