"""What ./package.sh makes of the built program: portable zip, installer, manifests, checksums."""
