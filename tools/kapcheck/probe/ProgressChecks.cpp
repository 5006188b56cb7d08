// SPDX-License-Identifier: MIT
#include "probe/Checks.h"
#include "probe/Services.h"

namespace KAPProbe {

namespace {

using Progresses = KAPProgressInterface;

// What the procedures of a progress object have been given.
struct Client {
  float fFraction = -1;
  std::string fText;
  int fFlag = 0;
  int fDeleted = 0;
  KAPError* fError = nullptr;  // what the next update returns
};

Client& Of(void* client) { return *static_cast<Client*>(client); }

KAPError* UpdateProc(void* client, float fraction, const char* text, int flag) {
  Of(client).fFraction = fraction;
  Of(client).fText = text ? text : "(null)";
  Of(client).fFlag = flag;
  return std::exchange(Of(client).fError, nullptr);
}

KAPError* DeleteProc(void* client) {
  ++Of(client).fDeleted;
  return nullptr;
}

Progress ClientProgress(Client& client) {
  Progress progress(
      Call<Progresses, "NewClientProgress">(static_cast<void*>(&client), &UpdateProc, &DeleteProc));
  Need<Progresses, "NewClientProgress">(progress, "returns null");
  return progress;
}

constexpr Check kChecks[] = {
    {"progress.null", "KAPProgressInterface", "NewNullProgress",
     "A progress object that ignores its updates: one reference.",
     [] {
       const Progress progress(Call<Progresses, "NewNullProgress">());
       Expect(progress, "NewNullProgress returns null");
       Do<Progresses, "Update">(progress, 0.5f, "half", 1);
     }},
    {"progress.client", "KAPProgressInterface", "NewClientProgress",
     "A progress object that forwards to `client`: one reference.",
     [] {
       Client client;
       const Progress progress = ClientProgress(client);
       Do<Progresses, "Update">(progress, 0.5f, "half", 3);
       Expect(client.fFraction > 0.49f && client.fFraction < 0.51f && client.fText == "half" &&
                  client.fFlag == 3,
              "the client gets other arguments");
       Do<Progresses, "Update">(progress, 1.0f, nullptr, 0);
       Expect(client.fText == "(null)", "a null text becomes \"" + client.fText + '"');
     }},
    {"progress.last-release", "KAPProgressInterface", "NewClientProgress",
     "The last release passes the client to `deleteClient`.",
     [] {
       Client client;
       CheckLastRelease<Progresses>(ClientProgress(client), client.fDeleted, "deletes the client");
     }},
    {"progress.references", "KAPProgressInterface", "AddRef",
     "Adds one reference; null is ignored.",
     [] {
       Call<Progresses, "AddRef">(nullptr);
       Client client;
       CheckLastRelease<Progresses>(ClientProgress(client), client.fDeleted, "deletes the client");
     }},
    {"progress.release", "KAPProgressInterface", "Release",
     "Releases one reference; null is ignored.",
     [] {
       Call<Progresses, "Release">(nullptr);
       Client client;
       ClientProgress(client).Reset();
       Expect(client.fDeleted == 1, "a new progress object outlives one release");
     }},
    {"progress.null-argument", "KAPProgressInterface", "NewClientProgress",
     "Null: out of memory or an argument is null; the client stays the caller's.",
     [] {
       Client client;
       void* const object = &client;
       const Progress made[] = {
           Progress(Call<Progresses, "NewClientProgress">(nullptr, &UpdateProc, &DeleteProc)),
           Progress(Call<Progresses, "NewClientProgress">(object, nullptr, &DeleteProc)),
           Progress(Call<Progresses, "NewClientProgress">(object, &UpdateProc, nullptr))};
       Expect(!made[0] && !made[1] && !made[2], "an argument is null, and the result is not");
       Expect(client.fDeleted == 0, "a call that returns null deletes the client");
     }},
    {"progress.stop", "KAPProgressInterface", "Update", "An error asks the caller to stop.",
     [] {
       Client client;
       const Progress progress = ClientProgress(client);
       client.fError =
           Call<KAPErrorInterface, "NewError">("refused", "Probe", 7l, nullptr, nullptr);
       Fails<Progresses, "Update">("of a client that returns an error", progress, 0.5f, "half", 0);
     }},
};

}  // namespace

std::span<const Check> ProgressChecks() { return kChecks; }

}  // namespace KAPProbe
