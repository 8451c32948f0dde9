// What every client of a broker is told before it connects.
#pragma once

#include <string>

#include "broker/broker_address.h"

struct mosquitto;

namespace ostrel {

/// Throws std::runtime_error with the library's text unless `result` is that of a success.
void CheckBroker(int result);

/// Gives the client the account of the address, and for an encrypted one the certificates that this
/// system trusts (in SSL_CERT_DIR where that is set), against which the broker's is held. Throws
/// std::runtime_error.
void Introduce(mosquitto* client, const BrokerAddress& address);

}  // namespace ostrel
