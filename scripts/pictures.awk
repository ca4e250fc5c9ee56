# Finishes what dot draws: the style and the hash of the source go in, what varies from one machine to another goes out.

/^<\?xml|^<!DOCTYPE|^ "http|^<!--|^ -->|<title>/ { next }

/^<svg/ { sub(/width="[0-9]+pt"/, "role=\"img\" &") }

{ print }

/viewBox=/ && !styled {
    styled = 1
    print "<!-- source: " hash " -->"
    print "<style>"
    while ((getline line <style) > 0) print line
    print "</style>"
}
