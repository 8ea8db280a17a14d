C:\Music\Band - Song.mp3
/home/me/songs/tune.kar
relative/dir/Été.mid
