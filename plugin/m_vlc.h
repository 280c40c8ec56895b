#pragma once

// Part of the host's expected surface; carries no state.
class m_vlc
{
public:
    m_vlc() {}
};
