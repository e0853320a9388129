/// @file
/// What this program shows: one idea a function, each in the file of its name. docs/messaging.md explains them.
#pragma once

namespace MessagePatterns {

void showIdentifiers();
void showAddresses();
void showOwnMessages();
void showExtendedFields();
void showSubscriptionsAndServices();
void showQueues();
void showForwarder();
void showPump();

}  // namespace MessagePatterns
