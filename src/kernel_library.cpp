// liboxa_vml_avx is assembled from the subsystem archives (linked whole); its
// exported surface is the version script built from src/*/exports.txt. This unit
// only gives the shared-library target a source of its own.
