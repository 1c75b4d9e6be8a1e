#pragma once

namespace TWB::Service {

struct BackendTarget;
struct EngineCall;
class ProductOptions;

/// Turns the product's options into the flags and variables of one restic or rclone call, so that
/// every call of a run, not only the backup itself, keeps to the limits the user set.
class OptionMapping final
{
public:
    /// Speed limits, pack size, connections, retries, TLS checks, proxy and memory of restic.
    static void applyToRestic(const ProductOptions& options, const BackendTarget& target, EngineCall& call);
    /// The same for rclone where it has them; it reads its flags from RCLONE_ variables as well.
    static void applyToRclone(const ProductOptions& options, const BackendTarget& target, EngineCall& call);
};

} // namespace TWB::Service
