#pragma once

#include "sync/WireRecords.h"

#include <concepts>
#include <type_traits>

/// The keys of every record, once, for the encoder and for the decoder: each visits the members in
/// the order in which they are written.
///
/// A coder has `required(key, member)`, `defaulted(key, member)` (always written, may be absent
/// when read) and `optional(key, member)`.
namespace tesserine::wire {

template <class Given, class Record>
concept Either = std::same_as<std::remove_const_t<Given>, Record>;  // const when encoding

void describe(auto& coder, Either<SyncRecord> auto& record) {
    coder.required("id", record.id);
    coder.required("kind", record.kind);
    coder.defaulted("rev", record.rev);
    coder.defaulted("seq", record.seq);
    coder.defaulted("deleted", record.deleted);
    coder.defaulted("payload", record.payload);
    coder.required("updated_at", record.updatedAt);
}

void describe(auto& coder, Either<SyncPush> auto& push) {
    coder.required("id", push.id);
    coder.required("kind", push.kind);
    coder.required("deleted", push.deleted);
    coder.required("payload", push.payload);
    coder.required("base_rev", push.baseRev);
    coder.required("updated_at", push.updatedAt);
}

void describe(auto& coder, Either<PushResult> auto& result) {
    coder.required("id", result.id);
    coder.required("status", result.status);
    coder.optional("rev", result.rev);
    coder.optional("seq", result.seq);
    coder.optional("displaced", result.displaced);
    coder.optional("reason", result.reason);
    coder.optional("limit", result.limit);
    coder.optional("measured", result.measured);
    coder.optional("message", result.message);
    coder.optional("server", result.server);
}

void describe(auto& coder, Either<PushResponse> auto& response) {
    coder.required("results", response.results);
    coder.required("head", response.head);
}

void describe(auto& coder, Either<ChangesResponse> auto& response) {
    coder.required("changes", response.changes);
    coder.required("seq", response.seq);
    coder.required("head", response.head);
    coder.required("more", response.more);
    coder.optional("since_mark", response.sinceMark);
    coder.optional("seq_mark", response.seqMark);
}

void describe(auto& coder, Either<SyncStateResponse> auto& state) {
    coder.required("head", state.head);
    coder.required("records", state.records);
    coder.required("tombstones", state.tombstones);
    coder.optional("record_bytes", state.recordBytes);
    coder.optional("revision_bytes", state.revisionBytes);
    coder.optional("record_quota_bytes", state.recordQuotaBytes);
}

void describe(auto& coder, Either<BlobUsage> auto& usage) {
    coder.optional("files", usage.files);
    coder.optional("bytes", usage.bytes);
    coder.optional("quota_bytes", usage.quotaBytes);
}

void describe(auto& coder, Either<AccountInfo> auto& account) {
    coder.required("id", account.id);
    coder.required("email", account.email);
    coder.optional("name", account.name);
    coder.optional("picture_url", account.pictureURL);
}

void describe(auto& coder, Either<TokenResponse> auto& response) {
    coder.required("account", response.account);
    coder.required("access_token", response.accessToken);
    coder.required("refresh_token", response.refreshToken);
    coder.required("expires_in", response.expiresIn);
}

void describe(auto& coder, Either<ShareLink> auto& link) {
    coder.required("id", link.id);
    coder.required("token", link.token);
    coder.required("url", link.url);
    coder.required("created_at", link.createdAt);
}

void describe(auto& coder, Either<ShareStatus> auto& status) {
    coder.required("shared", status.shared);
    coder.optional("created_at", status.createdAt);
}

void describe(auto& coder, Either<APITokenCreated> auto& token) {
    coder.required("id", token.id);
    coder.required("token", token.token);
    coder.required("label", token.label);
    coder.required("created_at", token.createdAt);
    coder.optional("expires_at", token.expiresAt);
}

void describe(auto& coder, Either<APITokenInfo> auto& token) {
    coder.required("id", token.id);
    coder.required("label", token.label);
    coder.required("created_at", token.createdAt);
    coder.optional("last_used_at", token.lastUsedAt);
    coder.optional("expires_at", token.expiresAt);
}

void describe(auto& coder, Either<RecordRevision> auto& revision) {
    coder.required("kind", revision.kind);
    coder.required("reason", revision.reason);
    coder.required("updated_at", revision.updatedAt);
    coder.required("payload", revision.payload);
}

void describe(auto& coder, Either<RevisionsReply> auto& reply) {
    coder.required("revisions", reply.revisions);
}

void describe(auto& coder, Either<BlobCheckReply> auto& reply) {
    coder.required("missing", reply.missing);
}

void describe(auto& coder, Either<BlobDeleteReply> auto& reply) {
    coder.optional("freed", reply.freed);
}

void describe(auto& coder, Either<SessionsReply> auto& reply) {
    coder.required("sessions", reply.sessions);
}

void describe(auto& coder, Either<APITokensReply> auto& reply) {
    coder.required("tokens", reply.tokens);
}

}  // namespace tesserine::wire
