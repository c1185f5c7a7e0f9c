"""Builds the packages of the built program: portable zip, installer, manifests, checksums."""
