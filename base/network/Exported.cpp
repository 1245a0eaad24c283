// The module's only object that others see.

#include "base/network/CurlAddress.h"
#include "base/network/CurlSession.h"
#include "base/network/DesktopKeyring.h"
#include "base/network/NetworkModule.h"
#include "base/network/PocoWebSocket.h"

extern "C" __attribute__((visibility("default"))) const tesserine::NetworkModule tesserineNetwork;

const tesserine::NetworkModule tesserineNetwork{
    .makeSession =
        [](tesserine::HTTPSession::Options options) -> std::unique_ptr<tesserine::HTTPTransport> {
        return std::make_unique<tesserine::CurlSession>(std::move(options));
    },
    .makeKeyring = [](std::string service) -> std::unique_ptr<tesserine::SecretStore> {
        return std::make_unique<tesserine::DesktopKeyring>(std::move(service));
    },
    .listen = tesserine::listenByPoco,
    .takeApart = tesserine::curladdress::takeApart,
    .resolve = tesserine::curladdress::resolve};
