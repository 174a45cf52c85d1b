complete -c qorix-sign -f
complete -c qorix-sign -n '__fish_is_first_token' -a 'keygen public sign verify'
complete -c qorix-sign -n 'not __fish_is_first_token' -F
complete -c qorix-sign -l help -d 'Print the options'
complete -c qorix-sign -l key -r -F -d 'The private key'
complete -c qorix-sign -l output -r -F -d 'Where to write'
complete -c qorix-sign -l public-key -x -d 'Whose signature counts'
complete -c qorix-sign -l version -d 'Print the version'
